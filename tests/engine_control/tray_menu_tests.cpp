#include <doctest.h>

#include <string>
#include <vector>

#include "tests/support/import_patch.h"
#include "tests/support/message_pump.h"
#include "tests/support/plain_window.h"
#include "tray/tray_menu.h"

namespace {

std::wstring CaptionOf(HMENU menu, UINT position) {
    wchar_t text[80] = L"";
    GetMenuStringW(menu, position, text, 80, MF_BYPOSITION);
    return text;
}

// Stands before the calls that show the menu.
struct MenuCalls {
    MenuCalls() { current = this; }
    ~MenuCalls() { current = nullptr; }

    static BOOL WINAPI Track(HMENU menu, UINT flags, int x, int y, HWND owner, TPMPARAMS* parameters) {
        MenuCalls& self = *current;
        self.calls.push_back("Track");
        self.menu = menu;
        self.flags = flags;
        self.position = {x, y};
        self.owner = owner;
        self.parameters = parameters;
        self.defaultItem = GetMenuDefaultItem(menu, FALSE, GMDI_USEDISABLED);
        if (self.whileShown) self.whileShown();
        return static_cast<BOOL>(self.chosen);
    }

    static BOOL WINAPI Post(HWND hwnd, UINT message, WPARAM, LPARAM) {
        current->calls.push_back("Post " + std::to_string(message));
        current->posted = hwnd;
        return TRUE;
    }

    static BOOL WINAPI Cursor(POINT* point) {
        *point = {321, 123};
        return TRUE;
    }

    static inline MenuCalls* current = nullptr;

    UINT chosen = 0;
    std::function<void()> whileShown;
    std::vector<std::string> calls;
    HMENU menu = nullptr;
    UINT flags = 0;
    POINT position{};
    HWND owner = nullptr;
    HWND posted = nullptr;
    TPMPARAMS* parameters = nullptr;
    UINT defaultItem = 0;

    const ImportPatch track{"user32.dll", "TrackPopupMenuEx", &Track};
    const ImportPatch post{"user32.dll", "PostMessageW", &Post};
    const ImportPatch cursor{"user32.dll", "GetCursorPos", &Cursor};
};

// Keeps which item was raised.
struct MenuWithListener {
    MenuWithListener() {
        menu.mnuStartKiller_Click = [this] { clicked.push_back("Start"); };
        menu.mnuStopKiller_Click = [this] { clicked.push_back("Stop"); };
        menu.mnuPauseKiller_Click = [this] { clicked.push_back("Pause"); };
        menu.mnuShowConfig_Click = [this] { clicked.push_back("Show"); };
        menu.mnuExit_Click = [this] { clicked.push_back("Exit"); };
    }

    TrayMenu menu;
    std::vector<std::string> clicked;
};

using Clicks = std::vector<std::string>;

// Types a key into the menu once it is shown, and some time later Esc, for a menu that the key did not close.
struct TypedKey {
    TypedKey(HWND window, WPARAM theKey) : hwnd(window), key(theKey) {
        current = this;
        SetTimer(hwnd, kKeyTimer, 100, Type);
        SetTimer(hwnd, kEscapeTimer, 600, Type);
    }
    ~TypedKey() {
        KillTimer(hwnd, kKeyTimer);
        KillTimer(hwnd, kEscapeTimer);
        current = nullptr;
    }

    static void CALLBACK Type(HWND window, UINT, UINT_PTR id, DWORD) {
        KillTimer(window, id);
        PostMessageW(window, WM_KEYDOWN, id == kKeyTimer ? current->key : VK_ESCAPE, 1);
    }

    static constexpr UINT_PTR kKeyTimer = 77;
    static constexpr UINT_PTR kEscapeTimer = 78;
    static inline TypedKey* current = nullptr;
    const HWND hwnd;
    const WPARAM key;
};

}  // namespace

TEST_CASE("the menu has its items in order, captioned and enabled") {
    const TrayMenu menu;
    const wchar_t* const captions[] = {
        L"&Start Sentrel", L"S&top Sentrel", L"", L"&Pause Sentrel", L"", L"&Open Calvane Configuration",
        L"E&xit Calvane"};
    const UINT ids[] = {mnuStartKiller, mnuStopKiller, mnuSep1, mnuPauseKiller,
                        mnuSep2,        mnuShowConfig, mnuExit};
    REQUIRE(GetMenuItemCount(menu.Handle()) == 7);
    for (UINT i = 0; i < 7; ++i) {
        CAPTURE(i);
        CHECK(CaptionOf(menu.Handle(), i) == captions[i]);
        CHECK(GetMenuItemID(menu.Handle(), static_cast<int>(i)) == ids[i]);
        const UINT state = GetMenuState(menu.Handle(), i, MF_BYPOSITION);
        const bool isSeparator = ids[i] == mnuSep1 || ids[i] == mnuSep2;
        CHECK(((state & MF_SEPARATOR) != 0) == isSeparator);
        if (!isSeparator) CHECK((state & (MF_GRAYED | MF_DISABLED | MF_CHECKED)) == 0);
    }
    CHECK(GetMenuDefaultItem(menu.Handle(), FALSE, GMDI_USEDISABLED) == static_cast<UINT>(-1));
}

TEST_CASE("the menu has its caption, on a menu bar") {
    const TrayMenu menu;
    // Nobody hands the bar out: it is looked for among all menus, by the low halves of their handles.
    std::vector<std::wstring> captions;
    for (ULONG_PTR handle = 0x20; handle < 0x10000; handle += 2) {
        const HMENU bar = reinterpret_cast<HMENU>(handle);
        if (IsMenu(bar) && GetSubMenu(bar, 0) == menu.Handle()) captions.push_back(CaptionOf(bar, 0));
    }
    CHECK(captions == std::vector<std::wstring>{L"Config Popup"});
}

TEST_CASE("the menu goes with its object") {
    HMENU handle = nullptr;
    {
        const TrayMenu menu;
        handle = menu.Handle();
        CHECK(IsMenu(handle));
    }
    CHECK_FALSE(IsMenu(handle));
}

TEST_CASE("the menu pops up at the cursor for either button and returns the item") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.menu == menu.Handle());
    CHECK((calls.flags & (TPM_RIGHTBUTTON | TPM_RETURNCMD)) == (TPM_RIGHTBUTTON | TPM_RETURNCMD));
    CHECK((calls.flags & TPM_NONOTIFY) == 0);
    CHECK(calls.position.x == 321);
    CHECK(calls.position.y == 123);
    CHECK(calls.owner == window.Hwnd());
    CHECK(calls.parameters == nullptr);
}

TEST_CASE("a message is posted behind the menu before the chosen item is raised") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    calls.chosen = mnuExit;
    menu.mnuExit_Click = [&] { calls.calls.push_back("Exit"); };
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.calls == Clicks{"Track", "Post 0", "Exit"});
    CHECK(calls.posted == window.Hwnd());
}

TEST_CASE("pausing is the default item where asked for, and none is otherwise") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.defaultItem == mnuPauseKiller);
    menu.PopUp(window.Hwnd(), false);
    CHECK(calls.defaultItem == static_cast<UINT>(-1));
    menu.EnableStoppedMenu();
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.defaultItem == mnuPauseKiller);
}

TEST_CASE_FIXTURE(MenuWithListener, "each item raises its own event") {
    PlainWindow window;
    MenuCalls calls;
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller, mnuShowConfig, mnuExit}) {
        calls.chosen = item;
        menu.PopUp(window.Hwnd(), true);
    }
    CHECK(clicked == Clicks{"Start", "Stop", "Pause", "Show", "Exit"});
}

TEST_CASE_FIXTURE(MenuWithListener, "leaving the menu raises nothing") {
    PlainWindow window;
    MenuCalls calls;
    menu.PopUp(window.Hwnd(), true);
    CHECK(clicked.empty());
    CHECK(calls.calls == Clicks{"Track", "Post 0"});
}

TEST_CASE("an item that nobody listens to is chosen without effect") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    calls.chosen = mnuStartKiller;
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.calls == Clicks{"Track", "Post 0"});
}

TEST_CASE("a menu that is shown is not shown a second time") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    calls.whileShown = [&] { menu.PopUp(window.Hwnd(), true); };
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.calls == Clicks{"Track", "Post 0"});
    calls.whileShown = nullptr;
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.calls == Clicks{"Track", "Post 0", "Track", "Post 0"});
}

TEST_CASE("an item may pop the menu up again") {
    PlainWindow window;
    TrayMenu menu;
    MenuCalls calls;
    calls.chosen = mnuShowConfig;
    menu.mnuShowConfig_Click = [&] {
        calls.chosen = 0;
        menu.PopUp(window.Hwnd(), false);
    };
    menu.PopUp(window.Hwnd(), true);
    CHECK(calls.calls == Clicks{"Track", "Post 0", "Track", "Post 0"});
}

TEST_CASE_FIXTURE(MenuWithListener, "a real menu takes the letter of an item") {
    PlainWindow window;
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetForegroundWindow(window.Hwnd());
    const TypedKey key(window.Hwnd(), 'O');
    menu.PopUp(window.Hwnd(), true);
    CHECK(clicked == Clicks{"Show"});
}

TEST_CASE_FIXTURE(MenuWithListener, "a real menu closes on Esc") {
    PlainWindow window;
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetForegroundWindow(window.Hwnd());
    const TypedKey key(window.Hwnd(), VK_ESCAPE);
    menu.PopUp(window.Hwnd(), true);
    CHECK(clicked.empty());
}

TEST_CASE_FIXTURE(MenuWithListener, "a real menu does not take a disabled item") {
    PlainWindow window;
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetForegroundWindow(window.Hwnd());
    menu.EnableRunningMenu();
    const TypedKey key(window.Hwnd(), 'S');
    menu.PopUp(window.Hwnd(), true);
    CHECK(clicked.empty());
}
