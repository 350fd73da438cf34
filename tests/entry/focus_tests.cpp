// Where the focus is in the window, and what it must not change.
#include <doctest.h>

#include <commctrl.h>

#include <set>
#include <vector>

#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/entry/window_inside.h"

namespace {

// Buttons as Windows makes them, not as Wine does: an unchecked option button of this thread that gets the
// focus is clicked, and selects itself, unless it has been told not to (BM_SETDONTCLICK). One at a time.
class WindowsButtons {
public:
    WindowsButtons() : m_hook(SetWindowsHookExW(WH_CALLWNDPROCRET, Watch, nullptr, GetCurrentThreadId())) {
        s_silent.clear();
    }
    WindowsButtons(const WindowsButtons&) = delete;
    WindowsButtons& operator=(const WindowsButtons&) = delete;
    ~WindowsButtons() { UnhookWindowsHookEx(m_hook); }

private:
    static bool IsOptionButton(HWND window) {
        return (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
    }

    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == BM_SETDONTCLICK) {
            if (sent.wParam != FALSE) {
                s_silent.insert(sent.hwnd);
            } else {
                s_silent.erase(sent.hwnd);
            }
        }
        if (code == HC_ACTION && sent.message == WM_SETFOCUS && IsOptionButton(sent.hwnd) &&
            !s_silent.contains(sent.hwnd) && SendMessageW(sent.hwnd, BM_GETCHECK, 0, 0) != BST_CHECKED) {
            SendMessageW(sent.hwnd, BM_CLICK, 0, 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::set<HWND> s_silent;
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
    const HeldKeys none{};
    for (int i = 0; i < 9; ++i)
        IsFormMessage(Key(GetFocus(), VK_TAB));
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
    const HeldKeys none{};
    IsFormMessage(Key(GetFocus(), VK_ESCAPE));
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
    const HeldKeys none{};
    IsFormMessage(Key(Tabs(), VK_TAB));
    CHECK(GetFocus() == ControlOf(IDC_OPTSTARTUP));
    CHECK(SelectedOption() == 0);
    CHECK_FALSE(CanApply());
}

TEST_CASE_FIXTURE(ShownWindow, "a click on a tab takes the focus from the page that it hides") {
    Show();
    // Windows asks for it; Wine's tabs take the focus at any click.
    CHECK((GetWindowLongW(Tabs(), GWL_STYLE) & TCS_FOCUSONBUTTONDOWN) != 0);
    SetFocus(ControlOf(IDC_TXTPAUSE));
    RECT tab{};
    TabCtrl_GetItemRect(Tabs(), 1, &tab);
    const LPARAM point = MAKELPARAM((tab.left + tab.right) / 2, (tab.top + tab.bottom) / 2);
    SendMessageW(Tabs(), WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(Tabs(), WM_LBUTTONUP, 0, point);
    CHECK(SelectedTab() == 1);
    CHECK(GetFocus() == Tabs());
    // A click on the tab that is selected, too.
    SetFocus(ControlOf(IDC_LSTEXCLUDE));
    SendMessageW(Tabs(), WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(Tabs(), WM_LBUTTONUP, 0, point);
    CHECK(GetFocus() == Tabs());
}

TEST_CASE_FIXTURE(ShownWindow, "a page that goes takes no focus with it") {
    Show();
    SetFocus(ControlOf(IDC_CBOPAUSEKEY));
    SUBCASE("when another one is selected") {
        SelectPage(2);
    }
    SUBCASE("when the About page is asked for") {
        Instance(kShowAbout);
    }
    CHECK(GetFocus() == Tabs());
}

TEST_CASE_FIXTURE(ShownWindow, "the focus stays where it is on the frame while pages change") {
    Show();
    for (const int id : {IDC_CMDOK, IDC_TAB}) {
        SetFocus(ControlOf(id));
        SelectPage(1);
        CHECK(GetFocus() == ControlOf(id));
        SelectPage(0);
        CHECK(GetFocus() == ControlOf(id));
    }
}

// The dialog manager gives the focus back to the control that had it when the window lost it, shown or not.
TEST_CASE_FIXTURE(ShownWindow, "with the focus on a hidden page the keys work as from the tabs") {
    Show();
    SelectPage(5);
    SetFocus(ControlOf(IDC_CBOPAUSEKEY));
    REQUIRE(GetFocus() == ControlOf(IDC_CBOPAUSEKEY));
    const HeldKeys none{};
    SUBCASE("Esc hides the window") {
        CHECK(IsFormMessage(Key(GetFocus(), VK_ESCAPE)));
        CHECK_FALSE(IsWindowVisible(Window()));
    }
    SUBCASE("Tab goes to the page that is shown") {
        CHECK(IsFormMessage(Key(GetFocus(), VK_TAB)));
        CHECK(GetFocus() == ControlOf(IDC_LBLNAVSITE));
    }
    SUBCASE("Ctrl+Tab goes to the next page") {
        const HeldKeys held{VK_CONTROL};
        CHECK(IsFormMessage(Key(GetFocus(), VK_TAB)));
        CHECK(SelectedTab() == 0);
        CHECK(IsWindowVisible(GetFocus()));
    }
    SUBCASE("an arrow moves along the tabs") {
        MSG message = Key(GetFocus(), VK_LEFT);
        if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
        CHECK(GetFocus() == Tabs());
        CHECK(SelectedTab() == 4);
    }
}
