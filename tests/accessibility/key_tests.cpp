// What keys do to the window, through the message loop of the manager.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include "app/resource.h"
#include "tests/entry/inside.h"

namespace {

constexpr int kExclude = 1;
constexpr int kLog = 2;
constexpr int kBanners = 3;
constexpr int kSearch = 4;
constexpr int kAbout = 5;

int g_timesOpened = 0;

HINSTANCE WINAPI CountOpening(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) {
    ++g_timesOpened;
    return reinterpret_cast<HINSTANCE>(SE_ERR_NOASSOC);
}

class KeyWindow : private InsideWithoutEngine {
public:
    KeyWindow() {
        Instance(formShow);
        Pump();
    }

    HWND Window() const { return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd)); }

    // The window has it, or one of its pages.
    HWND Find(int id) const {
        for (HWND child = GetWindow(Window(), GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            if (GetDlgCtrlID(child) == id) return child;
            if (const HWND onPage = GetDlgItem(child, id)) return onPage;
        }
        return nullptr;
    }

    void Page(int page) const {
        SendMessageW(Find(IDC_TAB), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
        Focus(IDC_TAB);
    }
    void Focus(int id) const {
        SetFocus(Find(id));
        REQUIRE(Focused() == id);
    }
    static int Focused() { return GetDlgCtrlID(GetFocus()); }
    bool IsShown() const { return IsWindowVisible(Window()) != FALSE; }

    static void Press(WPARAM key) {
        PostMessageW(GetFocus(), WM_KEYDOWN, key, 1);
        PostMessageW(GetFocus(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
        Pump();
    }
    static void PressWithAlt(wchar_t letter) {
        constexpr LPARAM kAltIsDown = 1 << 29;
        PostMessageW(GetFocus(), WM_SYSCHAR, letter, kAltIsDown | 1);
        Pump();
    }

private:
    static void Pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (g_frmConfig->IsFormMessage(message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
};

bool IsChecked(HWND list, int row) {
    return ListView_GetCheckState(list, row) != 0;
}

}  // namespace

TEST_CASE("an access key that two buttons share goes round between them, and presses the only one enabled") {
    struct Shared {
        int page;
        wchar_t key;
        int onPage;
        int ofWindow;
    };
    for (const Shared& shared : {Shared{kLog, L'c', IDC_CMDCLEARLIST, IDCANCEL},
                                 Shared{kSearch, L'o', IDC_CMDREMOVESEARCH, IDC_CMDOK}}) {
        CAPTURE(shared.page);
        KeyWindow window;
        const HWND onPage = window.Find(shared.onPage);
        const HWND apply = window.Find(IDC_CMDAPPLY);
        EnableWindow(onPage, TRUE);
        window.Page(shared.page);
        for (const wchar_t key : {shared.key, static_cast<wchar_t>(towupper(shared.key)), shared.key}) {
            KeyWindow::PressWithAlt(key);
            CHECK(KeyWindow::Focused() == shared.onPage);
            KeyWindow::PressWithAlt(key);
            CHECK(KeyWindow::Focused() == shared.ofWindow);
        }
        // Neither was pressed.
        CHECK(window.IsShown());
        CHECK_FALSE(IsWindowEnabled(apply));

        window.Focus(IDC_TAB);
        EnableWindow(onPage, FALSE);
        KeyWindow::PressWithAlt(shared.key);
        CHECK_FALSE(window.IsShown());
    }
}

TEST_CASE("the space bar presses the button that a shared access key has led to") {
    KeyWindow window;
    EnableWindow(window.Find(IDC_CMDCLEARLIST), TRUE);
    window.Page(kLog);
    KeyWindow::PressWithAlt(L'c');
    KeyWindow::PressWithAlt(L'c');
    REQUIRE(KeyWindow::Focused() == IDCANCEL);
    KeyWindow::Press(VK_SPACE);
    CHECK_FALSE(window.IsShown());
}

TEST_CASE("in a list with boxes the arrows select and the space bar ticks, which Apply can store") {
    for (const auto& [page, id] : {std::pair{kBanners, IDC_LVWBANNERS}, {kSearch, IDC_LVWSEARCHURLS}}) {
        CAPTURE(page);
        KeyWindow window;
        window.Page(page);
        const HWND list = window.Find(id);
        const HWND apply = window.Find(IDC_CMDAPPLY);
        KeyWindow::Press(VK_TAB);
        REQUIRE(GetFocus() == list);
        KeyWindow::Press(VK_HOME);
        KeyWindow::Press(VK_DOWN);
        CHECK(ListView_GetNextItem(list, -1, LVNI_SELECTED) == 1);
        KeyWindow::Press(VK_DOWN);
        CHECK(ListView_GetNextItem(list, -1, LVNI_SELECTED) == 2);
        KeyWindow::Press(VK_UP);
        CHECK(ListView_GetNextItem(list, -1, LVNI_SELECTED) == 1);
        CHECK(ListView_GetSelectedCount(list) == 1);

        EnableWindow(apply, FALSE);
        const bool before = IsChecked(list, 1);
        const bool neighbour = IsChecked(list, 2);
        KeyWindow::Press(VK_SPACE);
        CHECK(IsChecked(list, 1) == !before);
        CHECK(IsWindowEnabled(apply));
        KeyWindow::Press(VK_SPACE);
        CHECK(IsChecked(list, 1) == before);
        CHECK(IsChecked(list, 2) == neighbour);
    }
}

TEST_CASE("in a plain list the arrows select") {
    for (const auto& [page, id] : {std::pair{kExclude, IDC_LSTEXCLUDE}, {kLog, IDC_LSTCLOSEDWND}}) {
        CAPTURE(page);
        KeyWindow window;
        window.Page(page);
        const HWND list = window.Find(id);
        for (const wchar_t* const row : {L"a.example", L"b.example", L"c.example"})
            SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
        KeyWindow::Press(VK_TAB);
        REQUIRE(GetFocus() == list);
        KeyWindow::Press(VK_DOWN);
        CHECK(SendMessageW(list, LB_GETCURSEL, 0, 0) == 0);
        KeyWindow::Press(VK_END);
        CHECK(SendMessageW(list, LB_GETCURSEL, 0, 0) == 2);
        KeyWindow::Press(VK_UP);
        CHECK(SendMessageW(list, LB_GETCURSEL, 0, 0) == 1);
        if (page == kExclude) CHECK(IsWindowEnabled(window.Find(IDC_CMDREMOVEURL)));
    }
}

TEST_CASE("the arrows choose among the option buttons, and the space bar ticks check boxes") {
    KeyWindow window;
    const auto isOn = [&](int id) { return SendMessageW(window.Find(id), BM_GETCHECK, 0, 0) == BST_CHECKED; };
    window.Page(0);
    KeyWindow::Press(VK_TAB);
    REQUIRE(KeyWindow::Focused() == IDC_OPTLOADWITHKILLER);
    KeyWindow::Press(VK_DOWN);
    CHECK(isOn(IDC_OPTLOADFROMMENU));
    KeyWindow::Press(VK_DOWN);
    CHECK(isOn(IDC_OPTSTARTUP));
    KeyWindow::Press(VK_UP);
    CHECK(isOn(IDC_OPTLOADFROMMENU));
    CHECK_FALSE(isOn(IDC_OPTSTARTUP));

    for (const int id : {IDC_CHKPLAYSOUND, IDC_CHKBEEP}) {
        CAPTURE(id);
        const bool before = isOn(id);
        window.Focus(id);
        KeyWindow::Press(VK_SPACE);
        CHECK(isOn(id) == !before);
        KeyWindow::Press(VK_SPACE);
        CHECK(isOn(id) == before);
    }
}

TEST_CASE("what a click on the picture does, the link does by keyboard") {
    const ImportPatch browser("shell32.dll", "ShellExecuteA", &CountOpening);
    KeyWindow window;
    window.Page(kAbout);
    g_timesOpened = 0;
    const HWND picture = window.Find(IDC_IMGLOGO);
    SendMessageW(picture, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    SendMessageW(picture, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    CHECK(g_timesOpened == 1);
    KeyWindow::Press(VK_TAB);
    REQUIRE(KeyWindow::Focused() == IDC_LBLNAVSITE);
    KeyWindow::Press(VK_RETURN);
    CHECK(g_timesOpened == 2);
    KeyWindow::Press(VK_SPACE);
    CHECK(g_timesOpened == 3);
    CHECK(window.IsShown());
}
