// The icon's menu, and what the user's gestures over the icon and in its menu do to the configuration window.
#include <doctest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "shell_notification_interface.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_window.h"
#include "tests/support/shown_text.h"
#include "tray/shell_notification.h"
#include "tray/tray_gestures.h"

namespace {

using Calls = std::vector<std::string>;

constexpr UINT kNone = static_cast<UINT>(-1);

// Keeps what is asked of the configuration window, the calls to Windows in between, and the menu's other
// items that are raised.
struct Tray : TrayWindow {
    Tray() {
        menu.mnuStartKiller_Click = [this] { calls.push_back("Start"); };
        menu.mnuStopKiller_Click = [this] { calls.push_back("Stop"); };
        menu.mnuPauseKiller_Click = [this] { calls.push_back("Pause"); };
    }

    void ShowModeless() override { calls.push_back("Show"); }
    void PopupTrayMenu(bool pauseIsDefault) override {
        calls.push_back(pauseIsDefault ? "Pop up, pausing is the default" : "Pop up");
    }

    BOOL Post(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        CHECK(hwnd == window.Hwnd());
        CHECK(wParam == 0);
        CHECK(lParam == 0);
        calls.push_back("Post " + std::to_string(message) + (b_OKtoUnload ? ", to unload" : ""));
        return TRUE;
    }

    // Chooses from the menu, or leaves it.
    Calls PopUp(UINT item = 0, bool pauseIsDefault = false) {
        calls.clear();
        chosen = item;
        menu.PopUp(window.Hwnd(), pauseIsDefault);
        return calls;
    }

    void Connect() { gestures.Connect(window.Hwnd(), static_cast<IDispatch*>(icon.Get())); }

    // Calls the listener to the icon's event, which the icon itself never raises. S_FALSE where nobody
    // listens.
    HRESULT Raise(VARIANT* lastToFirst, UINT count) {
        const ComPtr<IDispatch> listener =
            ListenerTo(static_cast<IDispatch*>(icon.Get()), __uuidof(__ShellNotification));
        if (!listener) return S_FALSE;
        DISPPARAMS arguments{lastToFirst, nullptr, count, 0};
        return listener->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments, nullptr,
                                nullptr, nullptr);
    }

    HRESULT RaiseMouseUp(float x, bool hasPlace = true) {
        short number = 2;
        VARIANT arguments[4]{};
        arguments[0].vt = arguments[1].vt = VT_BYREF | VT_R4;
        arguments[0].pfltVal = arguments[1].pfltVal = hasPlace ? &x : nullptr;
        arguments[2].vt = arguments[3].vt = VT_BYREF | VT_I2;
        arguments[2].piVal = arguments[3].piVal = &number;
        calls.clear();
        return Raise(arguments, 4);
    }

    PlainWindow window;
    ComPtr<ShellNotification> icon = MakeObject<ShellNotification>();
    TrayMenu menu;
    bool b_OKtoUnload = false;
    TrayGestures gestures{menu, *this, b_OKtoUnload};
    Calls calls;
    UINT chosen = 0;
    std::function<void()> whileShown;
    const ImportFake<"SetForegroundWindow", decltype(&SetForegroundWindow)> foreground{
        "user32.dll", [this](HWND hwnd) {
            CHECK(hwnd == window.Hwnd());
            calls.push_back("SetForegroundWindow");
            return FALSE;
        }};
    const ImportFake<"PostMessageA", decltype(&PostMessageA)> postToWindow{
        "user32.dll", [this](auto... arguments) { return Post(arguments...); }};
    const ImportFake<"PostMessageW", decltype(&PostMessageW)> postBehindMenu{
        "user32.dll", [this](auto... arguments) { return Post(arguments...); }};
    const ImportFake<"GetCursorPos", decltype(&GetCursorPos)> cursor{"user32.dll", [](POINT* point) {
                                                                         *point = {321, 123};
                                                                         return TRUE;
                                                                     }};
    const ImportFake<"TrackPopupMenuEx", decltype(&TrackPopupMenuEx)> track{
        "user32.dll", [this](HMENU handle, UINT flags, int x, int y, HWND owner, TPMPARAMS*) {
            const UINT defaultItem = GetMenuDefaultItem(handle, FALSE, GMDI_USEDISABLED);
            calls.push_back(defaultItem == mnuPauseKiller ? "Track, pausing is the default" : "Track");
            CHECK((defaultItem == mnuPauseKiller || defaultItem == kNone));
            CHECK(handle == menu.Handle());
            CHECK((flags & (TPM_RIGHTBUTTON | TPM_RETURNCMD | TPM_NONOTIFY)) ==
                  (TPM_RIGHTBUTTON | TPM_RETURNCMD));
            CHECK(x == 321);
            CHECK(y == 123);
            CHECK(owner == window.Hwnd());
            if (whileShown) whileShown();
            return static_cast<BOOL>(std::exchange(chosen, 0));
        }};
};

std::wstring CaptionOf(HMENU menu, UINT position) {
    wchar_t text[80] = L"";
    GetMenuStringW(menu, position, text, 80, MF_BYPOSITION);
    return text;
}

}  // namespace

TEST_CASE(
    "the menu has its items in order, captioned and enabled, the last two always, and no default item; it "
    "has its caption, on a menu bar, and goes with its object") {
    const std::pair<UINT, std::wstring> items[] = {{mnuStartKiller, L"&Start Sentrel"},
                                                   {mnuStopKiller, L"S&top Sentrel"},
                                                   {mnuSep1, L""},
                                                   {mnuPauseKiller, L"&Pause Sentrel"},
                                                   {mnuSep2, L""},
                                                   {mnuShowConfig, L"&Open Calvane Configuration"},
                                                   {mnuExit, L"E&xit Calvane"}};
    HMENU bar = nullptr;
    const ImportFake<"CreateMenu", decltype(&CreateMenu)> create{"user32.dll",
                                                                 [&] { return bar = create.Original(); }};
    std::optional<TrayMenu> menu(std::in_place);
    const HMENU handle = menu->Handle();
    CHECK(CaptionOf(bar, 0) == L"Config Popup");
    REQUIRE(GetMenuItemCount(handle) == 7);
    CHECK(GetMenuDefaultItem(handle, FALSE, GMDI_USEDISABLED) == kNone);
    UINT position = 0;
    for (const auto& [id, caption] : items) {
        CAPTURE(id);
        CHECK(CaptionOf(handle, position) == caption);
        CHECK(GetMenuItemID(handle, static_cast<int>(position)) == id);
        const UINT state = GetMenuState(handle, position++, MF_BYPOSITION);
        CHECK(((state & MF_SEPARATOR) != 0) == caption.empty());
        if (!caption.empty()) CHECK((state & (MF_GRAYED | MF_DISABLED | MF_CHECKED)) == 0);
    }
    for (const auto enable : {&TrayMenu::EnableRunningMenu, &TrayMenu::EnableStoppedMenu}) {
        ((*menu).*enable)();
        for (const UINT item : {mnuShowConfig, mnuExit})
            CHECK((GetMenuState(handle, item, MF_BYCOMMAND) & MF_GRAYED) == 0);
    }
    menu.reset();
    CHECK_FALSE(IsMenu(handle));
    CHECK_FALSE(IsMenu(bar));
}

TEST_CASE_FIXTURE(
    Tray,
    "the menu pops up at the cursor for either button, pausing its default item where asked for and none "
    "otherwise, and a message is posted behind it before the chosen item is raised; leaving lets the window "
    "unload, then posts it a close message") {
    CHECK(PopUp(mnuStartKiller) == Calls{"Track", "Post 0", "Start"});
    CHECK(PopUp(mnuStopKiller) == Calls{"Track", "Post 0", "Stop"});
    CHECK(PopUp(mnuPauseKiller) == Calls{"Track", "Post 0", "Pause"});
    CHECK(PopUp(mnuShowConfig) == Calls{"Track", "Post 0", "Show"});
    menu.EnableStoppedMenu();
    CHECK(PopUp(0, true) == Calls{"Track, pausing is the default", "Post 0"});
    CHECK(PopUp(0, false) == Calls{"Track", "Post 0"});
    // An item that nobody listens to.
    menu.mnuStartKiller_Click = nullptr;
    CHECK(PopUp(mnuStartKiller) == Calls{"Track", "Post 0"});
    // An icon without events is an error, and leaving works.
    CHECK(ErrorOf([&] { gestures.Connect(window.Hwnd(), nullptr); }) != S_OK);
    CHECK(PopUp(mnuExit) == Calls{"Track", "Post 0", "Post 16, to unload"});
}

TEST_CASE_FIXTURE(Tray, "a menu that is shown is not shown a second time, until an item is raised") {
    whileShown = [&] { menu.PopUp(window.Hwnd(), false); };
    CHECK(PopUp() == Calls{"Track", "Post 0"});
    whileShown = nullptr;
    menu.mnuShowConfig_Click = [&] { menu.PopUp(window.Hwnd(), false); };
    CHECK(PopUp(mnuShowConfig) == Calls{"Track", "Post 0", "Track", "Post 0"});
}

TEST_CASE_FIXTURE(
    Tray,
    "any mouse event of the icon brings the window to the foreground; a double click, in twips, "
    "shows it, a release of the right button pops up the menu without a default item") {
    Connect();
    CHECK(RaiseMouseUp(7725.0f) == S_OK);
    CHECK(calls == Calls{"SetForegroundWindow", "Show"});
    CHECK(RaiseMouseUp(7755.0f) == S_OK);
    CHECK(calls == Calls{"SetForegroundWindow", "Pop up"});
    for (const float x :
         {0.0f, 515.0f, 517.0f, 7695.0f, 7710.0f, 7724.0f, 7724.5f, 7740.0f, 7756.0f, -7725.0f}) {
        CAPTURE(x);
        CHECK(RaiseMouseUp(x) == S_OK);
        CHECK(calls == Calls{"SetForegroundWindow"});
    }
}

TEST_CASE_FIXTURE(
    Tray,
    "the icon's event reaches its handler until it is disconnected; one with other arguments "
    "than its own, with fewer than it counts or with addresses that are none, is refused; an icon "
    "without events is an error") {
    CHECK(ErrorOf([&] { gestures.Connect(window.Hwnd(), nullptr); }) != S_OK);
    Connect();
    VARIANT empty[4]{};
    CHECK(Raise(nullptr, 0) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(Raise(nullptr, 4) == E_INVALIDARG);
    CHECK(Raise(empty, 4) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(RaiseMouseUp(0, false) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(calls.empty());
    gestures.Disconnect();
    CHECK(RaiseMouseUp(0) == S_FALSE);
    CHECK(icon->AddRef() == 2);
    CHECK(icon->Release() == 1);
}
