// Which keys of the main loop are the window's, where the focus is, and what it must not change.
#include <doctest.h>

#include <commctrl.h>

#include <map>
#include <vector>

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

// Buttons as Windows makes them, not as Wine does: an unchecked option button of this thread that gets the
// focus is clicked, and selects itself, unless it has been told not to (BM_SETDONTCLICK). One at a time.
class WindowsButtons {
public:
    WindowsButtons() : m_hook(SetWindowsHookExW(WH_CALLWNDPROCRET, Watch, nullptr, GetCurrentThreadId())) {
        s_isSilent.clear();
    }
    WindowsButtons(const WindowsButtons&) = delete;
    WindowsButtons& operator=(const WindowsButtons&) = delete;
    ~WindowsButtons() { UnhookWindowsHookEx(m_hook); }

private:
    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (sent.message == BM_SETDONTCLICK) s_isSilent[sent.hwnd] = sent.wParam != FALSE;
        if (sent.message == WM_SETFOCUS && !s_isSilent[sent.hwnd] &&
            (SendMessageW(sent.hwnd, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0 &&
            SendMessageW(sent.hwnd, BM_GETCHECK, 0, 0) != BST_CHECKED) {
            SendMessageW(sent.hwnd, BM_CLICK, 0, 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::map<HWND, bool> s_isSilent;
    const HHOOK m_hook;
};

constexpr int kOptions[] = {IDC_OPTSTARTUP, IDC_OPTLOADWITHKILLER, IDC_OPTLOADFROMMENU};

// 0 where none is.
int SelectedOption() {
    for (const int option : kOptions) {
        if (SendMessageW(ControlOf(option), BM_GETCHECK, 0, 0) == BST_CHECKED) return option;
    }
    return 0;
}

std::vector<int> OptionTabStops() {
    std::vector<int> stops;
    for (const int option : kOptions) {
        if ((GetWindowLongW(ControlOf(option), GWL_STYLE) & WS_TABSTOP) != 0) stops.push_back(option);
    }
    return stops;
}

bool CanApply() {
    return IsWindowEnabled(ControlOf(IDC_CMDAPPLY)) != FALSE;
}

void SelectPage(int page) {
    SendDlgItemMessageW(Window(), IDC_TAB, TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
}

struct ShownWindow : InsideWithoutEngine {
    void Show(const wchar_t* mode = L"RunOnly") {
        WriteFirstRunDefaults();
        user.Write(Schema::kSettingsKey, Schema::kStartup, mode);
        Instance(formShow);
        REQUIRE(GetActiveWindow() == Window());
    }

    static HWND Tabs() { return ControlOf(IDC_TAB); }
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

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "Ctrl with Tab, Page Down and Page Up walks the pages round, whoever has the focus") {
    Instance(FormHide);
    const struct {
        WPARAM key;
        bool hasShift;
        int page;
    } walk[] = {{VK_TAB, false, 1}, {VK_TAB, false, 2}, {VK_TAB, false, 3},   {VK_TAB, false, 4},
                {VK_TAB, false, 5}, {VK_TAB, false, 0}, {VK_PRIOR, false, 5}, {VK_NEXT, false, 0},
                {VK_TAB, true, 5},  {VK_NEXT, true, 0}};
    for (const HWND focus : {Window(), ControlOf(IDC_TAB), ControlOf(IDC_CMDOK)}) {
        for (const auto& [key, hasShift, page] : walk) {
            CHECK((hasShift ? Press(focus, key, {VK_CONTROL, VK_SHIFT}) : Press(focus, key, {VK_CONTROL})));
            CHECK(SelectedTab() == page);
        }
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "the pages stay with Alt held, without Ctrl or when a key goes up") {
    Instance(FormHide);
    const HWND tabs = ControlOf(IDC_TAB);
    Press(tabs, VK_TAB, {VK_CONTROL, VK_MENU});
    Press(tabs, VK_NEXT, {VK_CONTROL, VK_MENU});
    Press(tabs, VK_TAB);
    const HeldKeys held{VK_CONTROL};
    MSG released = Key(tabs, VK_TAB);
    released.message = WM_KEYUP;
    IsFormMessage(released);
    CHECK(SelectedTab() == 0);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "where another program has taken the tabs away the page keys do nothing") {
    Instance(formShow);
    SendDlgItemMessageW(Window(), IDC_TAB, TCM_DELETEALLITEMS, 0, 0);
    SetFocus(ControlOf(IDC_CMDOK));
    for (const WPARAM key : {VK_TAB, VK_NEXT, VK_PRIOR}) {
        CHECK(Press(ControlOf(IDC_CMDOK), key, {VK_CONTROL}));
        CHECK(SelectedTab() == -1);
        CHECK(GetFocus() == ControlOf(IDC_CMDOK));
    }
}

TEST_CASE_FIXTURE(ShownWindow, "moving the focus selects no option button and marks no change") {
    const WindowsButtons windows;
    Show();
    for (const int option : kOptions) {
        CAPTURE(option);
        SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(ControlOf(option)), TRUE);
        CHECK(GetFocus() == ControlOf(option));
        CHECK(SelectedOption() == IDC_OPTLOADWITHKILLER);
        CHECK_FALSE(CanApply());
    }
    SetFocus(Tabs());
    for (int i = 0; i < 9; ++i)
        Press(GetFocus(), VK_TAB);
    CHECK(SelectedOption() == IDC_OPTLOADWITHKILLER);
    CHECK_FALSE(CanApply());
}

TEST_CASE_FIXTURE(ShownWindow, "after Esc on an option button the next show finds the stored one selected") {
    const WindowsButtons windows;
    Show();
    SetFocus(ControlOf(IDC_OPTSTARTUP));
    Click(IDC_OPTSTARTUP);
    CHECK(SelectedOption() == IDC_OPTSTARTUP);
    CHECK(CanApply());
    Press(GetFocus(), VK_ESCAPE);
    REQUIRE_FALSE(IsWindowVisible(Window()));
    EnableWindow(ControlOf(IDC_CMDAPPLY), FALSE);
    Instance(formShow);
    SetFocus(ControlOf(IDC_OPTSTARTUP));
    CHECK(SelectedOption() == IDC_OPTLOADWITHKILLER);
    CHECK(OptionTabStops() == std::vector<int>{IDC_OPTLOADWITHKILLER});
    CHECK_FALSE(CanApply());
}

TEST_CASE_FIXTURE(ShownWindow, "where no option button is selected the tab key stops at the first") {
    const WindowsButtons windows;
    Show(L"Something else");
    CHECK(OptionTabStops() == std::vector<int>{IDC_OPTSTARTUP});
    SetFocus(Tabs());
    Press(Tabs(), VK_TAB);
    CHECK(GetFocus() == ControlOf(IDC_OPTSTARTUP));
    CHECK(SelectedOption() == 0);
    CHECK_FALSE(CanApply());
}

TEST_CASE_FIXTURE(ShownWindow, "a click on a tab, selected or not, takes the focus from the page") {
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
}

TEST_CASE_FIXTURE(ShownWindow, "a page that goes takes no focus with it, and leaves that of the frame") {
    Show();
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
