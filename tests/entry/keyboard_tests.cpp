// Which keys of the main loop are the window's, where the focus is, and what it must not change.
#include <doctest.h>

#include <commctrl.h>

#include <set>

#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/entry/window_inside.h"
#include "tests/support/plain_window.h"

namespace {

// Whether a key that is pressed while others are held is taken as the window's.
bool Press(HWND focus, WPARAM key, std::initializer_list<int> held = {}) {
    const HeldKeys keys(held);
    return IsFormMessage(Key(focus, key));
}

constexpr int kOptions[] = {IDC_OPTSTARTUP, IDC_OPTLOADWITHKILLER, IDC_OPTLOADFROMMENU};

struct ShownWindow : InsideWithoutEngine {
    void Show(const wchar_t* mode = L"RunOnly") {
        WriteFirstRunDefaults();
        user.Write(Schema::kSettingsKey, Schema::kStartup, mode);
        Instance(formShow);
        REQUIRE(GetActiveWindow() == Window());
    }

    static HWND Tabs() { return ControlOf(IDC_TAB); }
    static void SelectPage(int page) { SendMessageW(Tabs(), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0); }

    // That this option button is selected, 0: none; the tab key stops at that other one; and nothing has
    // been changed. Windows clicks an unselected one that gets the focus unless it has been told not to; Wine
    // never does.
    void CheckOptions(int selected, int tabStop) const {
        for (const int option : kOptions) {
            CAPTURE(option);
            CHECK(notClicked.contains(ControlOf(option)));
            CHECK((SendMessageW(ControlOf(option), BM_GETCHECK, 0, 0) == BST_CHECKED) ==
                  (option == selected));
            CHECK(((GetWindowLongW(ControlOf(option), GWL_STYLE) & WS_TABSTOP) != 0) == (option == tabStop));
        }
        CHECK_FALSE(IsWindowEnabled(ControlOf(IDC_CMDAPPLY)));
    }

    std::set<HWND> notClicked;
    const ImportFake<"SendMessageW", decltype(&SendMessageW)> send{
        "user32.dll", [this](HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == BM_SETDONTCLICK && wParam != FALSE) notClicked.insert(hwnd);
            return send.Original(hwnd, message, wParam, lParam);
        }};
};

}  // namespace

TEST_CASE_FIXTURE(InsideWithoutEngine, "keys of another window, or without a window, are left alone") {
    Instance(FormHide);
    const PlainWindow other;
    for (const WPARAM key : {VK_TAB, VK_NEXT, VK_PRIOR, VK_ESCAPE, VK_RETURN})
        CHECK_FALSE(Press(other.Hwnd(), key, {VK_CONTROL}));
    CHECK_FALSE(Press(nullptr, VK_TAB, {VK_CONTROL}));
    CHECK(SelectedTab() == 0);
    CHECK(Press(ControlOf(IDC_TAB), VK_TAB));
    g_frmConfig->Unload();
    for (const HWND window : {other.Hwnd(), HWND{}})
        CHECK_FALSE(Press(window, VK_TAB));
}

TEST_CASE_FIXTURE(
    InsideWithoutEngine,
    "Ctrl with Tab, Page Down and Page Up walks the pages round, whoever has the focus, but not "
    "with Alt held, when a key goes up, or where another program has taken the tabs away") {
    Instance(formShow);
    const struct {
        WPARAM key;
        std::initializer_list<int> held;
        int page;
    } walk[] = {{VK_TAB, {VK_CONTROL}, 1},           {VK_TAB, {VK_CONTROL}, 2},
                {VK_NEXT, {VK_CONTROL}, 3},          {VK_TAB, {VK_CONTROL, VK_MENU}, 3},
                {VK_NEXT, {VK_CONTROL, VK_MENU}, 3}, {VK_TAB, {}, 3},
                {VK_NEXT, {VK_CONTROL}, 4},          {VK_NEXT, {VK_CONTROL}, 5},
                {VK_TAB, {VK_CONTROL}, 0},           {VK_PRIOR, {VK_CONTROL}, 5},
                {VK_NEXT, {VK_CONTROL}, 0},          {VK_TAB, {VK_CONTROL, VK_SHIFT}, 5},
                {VK_NEXT, {VK_CONTROL, VK_SHIFT}, 0}};
    for (const HWND focus : {Window(), ControlOf(IDC_TAB), ControlOf(IDC_CMDOK)}) {
        for (const auto& [key, held, page] : walk) {
            Press(focus, key, held);
            CHECK(SelectedTab() == page);
        }
    }
    {
        const HeldKeys held{VK_CONTROL};
        MSG released = Key(ControlOf(IDC_TAB), VK_TAB);
        released.message = WM_KEYUP;
        IsFormMessage(released);
        CHECK(SelectedTab() == 0);
    }
    SendDlgItemMessageW(Window(), IDC_TAB, TCM_DELETEALLITEMS, 0, 0);
    SetFocus(ControlOf(IDC_CMDOK));
    for (const WPARAM key : {VK_TAB, VK_NEXT, VK_PRIOR}) {
        CHECK(Press(ControlOf(IDC_CMDOK), key, {VK_CONTROL}));
        CHECK(SelectedTab() == -1);
        CHECK(GetFocus() == ControlOf(IDC_CMDOK));
    }
}

TEST_CASE_FIXTURE(ShownWindow, "moving the focus selects no option button and marks no change") {
    SUBCASE("the stored one is selected") {
        Show();
        for (const int option : kOptions) {
            SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(ControlOf(option)), TRUE);
            CHECK(GetFocus() == ControlOf(option));
            CheckOptions(IDC_OPTLOADWITHKILLER, IDC_OPTLOADWITHKILLER);
        }
        SetFocus(Tabs());
        for (int i = 0; i < 9; ++i)
            Press(GetFocus(), VK_TAB);
        CheckOptions(IDC_OPTLOADWITHKILLER, IDC_OPTLOADWITHKILLER);
    }
    SUBCASE("the stored one is selected after another one was, and Esc") {
        Show();
        SetFocus(ControlOf(IDC_OPTSTARTUP));
        Click(IDC_OPTSTARTUP);
        CHECK(IsWindowEnabled(ControlOf(IDC_CMDAPPLY)));
        Press(GetFocus(), VK_ESCAPE);
        REQUIRE_FALSE(IsWindowVisible(Window()));
        EnableWindow(ControlOf(IDC_CMDAPPLY), FALSE);
        Instance(formShow);
        SetFocus(ControlOf(IDC_OPTSTARTUP));
        CheckOptions(IDC_OPTLOADWITHKILLER, IDC_OPTLOADWITHKILLER);
    }
    SUBCASE("none is selected, and the tab key stops at the first") {
        Show(L"Something else");
        SetFocus(Tabs());
        Press(Tabs(), VK_TAB);
        CHECK(GetFocus() == ControlOf(IDC_OPTSTARTUP));
        CheckOptions(0, IDC_OPTSTARTUP);
    }
}

TEST_CASE_FIXTURE(ShownWindow,
                  "a click on a tab, selected or not, takes the focus from the page; a page that goes takes "
                  "none with it, and leaves that of the frame") {
    Show();
    // Windows asks for it; Wine's tabs take the focus at any click.
    CHECK((GetWindowLongW(Tabs(), GWL_STYLE) & TCS_FOCUSONBUTTONDOWN) != 0);
    RECT tab{};
    TabCtrl_GetItemRect(Tabs(), 1, &tab);
    const LPARAM point = MAKELPARAM((tab.left + tab.right) / 2, (tab.top + tab.bottom) / 2);
    for (const int focus : {IDC_TXTPAUSE, IDC_LSTEXCLUDE}) {
        SetFocus(ControlOf(focus));
        SendMessageW(Tabs(), WM_LBUTTONDOWN, MK_LBUTTON, point);
        SendMessageW(Tabs(), WM_LBUTTONUP, 0, point);
        CHECK(SelectedTab() == 1);
        CHECK(GetFocus() == Tabs());
    }
    for (const int id : {IDC_CMDOK, IDC_TAB}) {
        SetFocus(ControlOf(id));
        for (const int page : {1, 0}) {
            SelectPage(page);
            CHECK(GetFocus() == ControlOf(id));
        }
    }
    SetFocus(ControlOf(IDC_CBOPAUSEKEY));
    SUBCASE("when another one is selected") {
        SelectPage(2);
    }
    SUBCASE("when the About page is asked for") {
        Instance(kShowAbout);
    }
    CHECK(GetFocus() == Tabs());
}

// The dialog manager gives the focus back to the control that had it when the window lost it, shown or not.
TEST_CASE_FIXTURE(ShownWindow, "with the focus on a hidden page the keys work as from the tabs") {
    Show();
    SelectPage(5);
    SetFocus(ControlOf(IDC_CBOPAUSEKEY));
    REQUIRE(GetFocus() == ControlOf(IDC_CBOPAUSEKEY));
    SUBCASE("Esc hides the window") {
        CHECK(Press(GetFocus(), VK_ESCAPE));
        CHECK_FALSE(IsWindowVisible(Window()));
    }
    SUBCASE("but not what another program posts to a control without the focus") {
        SetFocus(Tabs());
        MSG message = Key(ControlOf(IDC_CBOPAUSEKEY), VK_ESCAPE);
        CHECK_FALSE(g_frmConfig->IsFormMessage(message));
    }
    SUBCASE("Tab goes to the page that is shown") {
        CHECK(Press(GetFocus(), VK_TAB));
        CHECK(GetFocus() == ControlOf(IDC_LBLNAVSITE));
    }
    SUBCASE("Ctrl+Tab goes to the next page") {
        CHECK(Press(GetFocus(), VK_TAB, {VK_CONTROL}));
        CHECK(SelectedTab() == 0);
        CHECK(IsWindowVisible(GetFocus()));
    }
    SUBCASE("an arrow moves along the tabs") {
        const HeldKeys none{};
        MSG message = Key(GetFocus(), VK_LEFT);
        if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
        CHECK(GetFocus() == Tabs());
        CHECK(SelectedTab() == 4);
    }
}
