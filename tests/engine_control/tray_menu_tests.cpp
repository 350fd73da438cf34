#include <doctest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/import_patch.h"
#include "tests/support/plain_window.h"
#include "tray/tray_menu.h"

namespace {

using Calls = std::vector<std::string>;

constexpr UINT kNone = static_cast<UINT>(-1);

std::wstring CaptionOf(HMENU menu, UINT position) {
    wchar_t text[80] = L"";
    GetMenuStringW(menu, position, text, 80, MF_BYPOSITION);
    return text;
}

// A menu on a window, with the calls that show it and the items that are raised, in order.
struct ShownMenu {
    ShownMenu() {
        current = this;
        menu.mnuStartKiller_Click = [this] { calls.push_back("Start"); };
        menu.mnuStopKiller_Click = [this] { calls.push_back("Stop"); };
        menu.mnuPauseKiller_Click = [this] { calls.push_back("Pause"); };
        menu.mnuShowConfig_Click = [this] { calls.push_back("Show"); };
        menu.mnuExit_Click = [this] { calls.push_back("Exit"); };
    }
    ~ShownMenu() { current = nullptr; }

    Calls PopUp(bool pauseIsDefault = true) {
        calls.clear();
        menu.PopUp(window.Hwnd(), pauseIsDefault);
        return calls;
    }

    static BOOL WINAPI Track(HMENU menu, UINT flags, int x, int y, HWND owner, TPMPARAMS* parameters) {
        ShownMenu& self = *current;
        self.calls.push_back("Track");
        CHECK(menu == self.menu.Handle());
        CHECK((flags & (TPM_RIGHTBUTTON | TPM_RETURNCMD)) == (TPM_RIGHTBUTTON | TPM_RETURNCMD));
        CHECK((flags & TPM_NONOTIFY) == 0);
        CHECK(x == 321);
        CHECK(y == 123);
        CHECK(owner == self.window.Hwnd());
        CHECK(parameters == nullptr);
        self.defaultItem = GetMenuDefaultItem(menu, FALSE, GMDI_USEDISABLED);
        if (self.whileShown) self.whileShown();
        return static_cast<BOOL>(self.chosen);
    }

    static BOOL WINAPI Post(HWND hwnd, UINT message, WPARAM, LPARAM) {
        CHECK(hwnd == current->window.Hwnd());
        current->calls.push_back("Post " + std::to_string(message));
        return TRUE;
    }

    static BOOL WINAPI Cursor(POINT* point) {
        *point = {321, 123};
        return TRUE;
    }

    static inline ShownMenu* current = nullptr;

    PlainWindow window;
    TrayMenu menu;
    UINT chosen = 0;
    std::function<void()> whileShown;
    Calls calls;
    UINT defaultItem = 0;

    const ImportPatch track{"user32.dll", "TrackPopupMenuEx", &Track};
    const ImportPatch post{"user32.dll", "PostMessageW", &Post};
    const ImportPatch cursor{"user32.dll", "GetCursorPos", &Cursor};
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
    CHECK(GetMenuDefaultItem(menu.Handle(), FALSE, GMDI_USEDISABLED) == kNone);
}

TEST_CASE("opening and leaving are never disabled") {
    TrayMenu menu;
    for (const auto enable : {&TrayMenu::EnableRunningMenu, &TrayMenu::EnableStoppedMenu}) {
        (menu.*enable)();
        for (const UINT item : {mnuShowConfig, mnuExit})
            CHECK((GetMenuState(menu.Handle(), item, MF_BYCOMMAND) & MF_GRAYED) == 0);
    }
}

TEST_CASE("the menu has its caption, on a menu bar, and goes with its object") {
    HMENU handle = nullptr;
    {
        const TrayMenu menu;
        handle = menu.Handle();
        CHECK(IsMenu(handle));
        // Nobody hands the bar out: it is looked for among all menus, by the low halves of their handles.
        std::vector<std::wstring> captions;
        for (ULONG_PTR number = 0x20; number < 0x10000; number += 2) {
            const HMENU bar = reinterpret_cast<HMENU>(number);
            if (IsMenu(bar) && GetSubMenu(bar, 0) == handle) captions.push_back(CaptionOf(bar, 0));
        }
        CHECK(captions == std::vector<std::wstring>{L"Config Popup"});
    }
    CHECK_FALSE(IsMenu(handle));
}

TEST_CASE_FIXTURE(
    ShownMenu,
    "the menu pops up at the cursor for either button, and a message is posted behind it before "
    "the chosen item is raised") {
    const std::pair<UINT, std::string> rows[] = {{mnuStartKiller, "Start"},
                                                 {mnuStopKiller, "Stop"},
                                                 {mnuPauseKiller, "Pause"},
                                                 {mnuShowConfig, "Show"},
                                                 {mnuExit, "Exit"}};
    for (const auto& [item, raised] : rows) {
        chosen = item;
        CHECK(PopUp() == Calls{"Track", "Post 0", raised});
    }
    chosen = 0;
    CHECK(PopUp() == Calls{"Track", "Post 0"});
    // An item that nobody listens to.
    chosen = mnuStartKiller;
    menu.mnuStartKiller_Click = nullptr;
    CHECK(PopUp() == Calls{"Track", "Post 0"});
}

TEST_CASE_FIXTURE(ShownMenu, "pausing is the default item where asked for, and none is otherwise") {
    PopUp(true);
    CHECK(defaultItem == mnuPauseKiller);
    PopUp(false);
    CHECK(defaultItem == kNone);
    menu.EnableStoppedMenu();
    PopUp(true);
    CHECK(defaultItem == mnuPauseKiller);
}

TEST_CASE_FIXTURE(ShownMenu, "a menu that is shown is not shown a second time, until an item is raised") {
    whileShown = [&] { menu.PopUp(window.Hwnd(), true); };
    CHECK(PopUp() == Calls{"Track", "Post 0"});
    whileShown = nullptr;
    chosen = mnuShowConfig;
    menu.mnuShowConfig_Click = [&] {
        chosen = 0;
        menu.PopUp(window.Hwnd(), false);
    };
    CHECK(PopUp() == Calls{"Track", "Post 0", "Track", "Post 0"});
}
