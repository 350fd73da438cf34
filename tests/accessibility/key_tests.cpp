// What keys do to the window, through the message loop of the manager.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include "lists/resource.h"
#include "options/resource.h"
#include "store/settings_schema.h"
#include "tests/entry/window_inside.h"
#include "tests/support/dialog_script.h"
#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"

namespace {

enum Pages : int { kSettings, kExclude, kLog, kBanners, kSearch, kAbout };

struct KeyWindow : InsideWithoutEngine {
    KeyWindow() {
        Instance(formShow);
        Pump();
    }

    static void Page(int page) {
        SendMessageW(ControlOf(IDC_TAB), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
        Focus(IDC_TAB);
    }
    static void Focus(int id) {
        SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(ControlOf(id)), TRUE);
        REQUIRE(FocusedId() == id);
    }
    static bool CanApply() { return IsWindowEnabled(ControlOf(IDC_CMDAPPLY)) != FALSE; }

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

    // Whether the key opens a dialog, which is closed again.
    template <class Body>
    static bool OpensDialog(Body press) {
        bool hasOpened = false;
        const DialogScript script({[&](HWND dialog) {
            hasOpened = true;
            ClickButton(dialog, IDCANCEL);
        }});
        press();
        return hasOpened;
    }

    static std::wstring Pause() { return TextIn(GetParent(ControlOf(IDC_TXTPAUSE)), IDC_TXTPAUSE); }
    static void Pause(const wchar_t* text) { SetWindowTextW(ControlOf(IDC_TXTPAUSE), text); }
    std::wstring StoredPause() const { return user.Text(Schema::kSettingsKey, L"txtPause"); }

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

}  // namespace

TEST_CASE_FIXTURE(
    KeyWindow,
    "an access key that two buttons share goes round between them, and presses the only one enabled") {
    const HWND clear = ControlOf(IDC_CMDCLEARLIST);
    EnableWindow(clear, TRUE);
    Page(kLog);
    for (const int next : {IDC_CMDCLEARLIST, IDCANCEL, IDC_CMDCLEARLIST, IDCANCEL}) {
        PressWithAlt(L'c');
        CHECK(FocusedId() == next);
    }
    CHECK(IsShown());
    CHECK_FALSE(CanApply());
    Press(VK_SPACE);
    CHECK_FALSE(IsShown());

    Instance(formShow);
    Page(kLog);
    EnableWindow(clear, FALSE);
    PressWithAlt(L'c');
    CHECK_FALSE(IsShown());
}

TEST_CASE_FIXTURE(KeyWindow, "access keys reach the buttons of the page that is shown, and no others") {
    EnableWindow(ControlOf(IDC_CMDREMOVEURL), TRUE);
    Page(kExclude);
    CHECK(OpensDialog([] { PressWithAlt(L'u'); }));
    REQUIRE(CanApply());
    PressWithAlt(L'a');
    CHECK_FALSE(CanApply());
    Page(kAbout);
    for (const wchar_t key : std::wstring(L"fturlnmse"))
        PressWithAlt(key);
    CHECK(FocusedId() == IDC_TAB);
    PressWithAlt(L'o');
    CHECK_FALSE(IsShown());
}

TEST_CASE_FIXTURE(KeyWindow, "Ctrl+Tab on a page takes the focus along to the next page's first control") {
    Focus(IDC_TXTPAUSE);
    const HeldKeys held{VK_CONTROL};
    for (const int first :
         {IDC_LSTEXCLUDE, IDC_LSTCLOSEDWND, IDC_LVWBANNERS, IDC_LVWSEARCHURLS, IDC_LBLNAVSITE}) {
        CHECK(IsFormMessage(Key(GetFocus(), VK_TAB)));
        CHECK(FocusedId() == first);
        CHECK(IsWindowVisible(GetFocus()));
    }
}

TEST_CASE_FIXTURE(KeyWindow,
                  "Esc hides the window from wherever the focus is, and shows the stored settings") {
    for (const int id : {IDC_CHKPLAYSOUND, IDC_CMDOK, IDC_TAB, IDC_CBOPAUSEKEY, IDC_TXTPAUSE}) {
        CAPTURE(id);
        Instance(formShow);
        Pause(L"17");
        Focus(id);
        Press(VK_ESCAPE);
        CHECK_FALSE(IsShown());
        CHECK(Pause() == L"5");
    }
    CHECK(StoredPause() == L"5000");
    Instance(formShow);
    CHECK(FocusedId() == IDC_TXTPAUSE);
}

TEST_CASE_FIXTURE(KeyWindow,
                  "Enter presses the button or the link with the focus, and nothing where none has it") {
    Pause(L"17");
    EnableWindow(ControlOf(IDC_CMDAPPLY), TRUE);
    for (const auto& [page, id] : {std::pair{kSettings, IDC_TXTPAUSE},
                                   {kSettings, IDC_TXTSPEED},
                                   {kSettings, IDC_CBOPAUSEKEY},
                                   {kSettings, IDC_TAB},
                                   {kExclude, IDC_LSTEXCLUDE},
                                   {kBanners, IDC_LVWBANNERS}}) {
        CAPTURE(id);
        Page(page);
        Focus(id);
        Press(VK_RETURN);
        CHECK(IsShown());
        CHECK(FocusedId() == id);
        CHECK(SelectedTab() == page);
    }
    CHECK(StoredPause() == L"5000");

    Page(kExclude);
    Focus(IDC_CMDADDURL);
    CHECK(OpensDialog([] { Press(VK_RETURN); }));
    Focus(IDC_CMDAPPLY);
    Press(VK_RETURN);
    CHECK_FALSE(CanApply());
    CHECK(StoredPause() == L"17000");
    CHECK(IsShown());

    int opened = 0;
    const ImportFake<"ShellExecuteA", decltype(&ShellExecuteA)> browser{
        "shell32.dll", [&](auto...) { return reinterpret_cast<HINSTANCE>(INT_PTR{++opened}); }};
    Page(kAbout);
    Focus(IDC_LBLNAVSITE);
    Press(VK_RETURN);
    CHECK(opened == 1);
    CHECK(IsShown());
    for (const int button : {IDC_CMDOK, IDCANCEL}) {
        CAPTURE(button);
        Instance(formShow);
        Focus(button);
        Press(VK_RETURN);
        CHECK_FALSE(IsShown());
    }
}

TEST_CASE_FIXTURE(KeyWindow,
                  "the arrows select rows and option buttons, and the space bar ticks rows that have a box "
                  "and check boxes") {
    const HWND sites = ControlOf(IDC_LSTEXCLUDE);
    for (const wchar_t* const row : {L"a.example", L"b.example"})
        SendMessageW(sites, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    const auto goDown = [](int page, HWND list) {
        Page(page);
        Press(VK_TAB);
        REQUIRE(GetFocus() == list);
        Press(VK_HOME);
        Press(VK_DOWN);
    };
    goDown(kExclude, sites);
    CHECK(SendMessageW(sites, LB_GETCURSEL, 0, 0) == 1);
    CHECK_FALSE(CanApply());

    const HWND banners = ControlOf(IDC_LVWBANNERS);
    goDown(kBanners, banners);
    CHECK(ListView_GetNextItem(banners, -1, LVNI_SELECTED) == 1);
    CHECK_FALSE(CanApply());
    const UINT before = ListView_GetCheckState(banners, 1);
    Press(VK_SPACE);
    CHECK(ListView_GetCheckState(banners, 1) != before);
    CHECK(CanApply());

    const auto isOn = [](int id) { return SendMessageW(ControlOf(id), BM_GETCHECK, 0, 0) == BST_CHECKED; };
    Page(kSettings);
    Press(VK_TAB);
    REQUIRE(FocusedId() == IDC_OPTLOADWITHKILLER);
    for (const auto& [key, next] :
         {std::pair{VK_DOWN, IDC_OPTLOADFROMMENU}, {VK_UP, IDC_OPTLOADWITHKILLER}}) {
        Press(static_cast<WPARAM>(key));
        CHECK(isOn(next));
    }
    Focus(IDC_CHKBEEP);
    const bool wasOn = isOn(IDC_CHKBEEP);
    Press(VK_SPACE);
    CHECK(isOn(IDC_CHKBEEP) != wasOn);
}
