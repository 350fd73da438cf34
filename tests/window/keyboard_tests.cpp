// The window by keyboard alone, with real keys.
#include <doctest.h>

#include <commctrl.h>

#include <algorithm>
#include <map>

#include "tests/support/automation.h"
#include "tests/support/shown_text.h"
#include "tests/window/keyboard_window.h"
#include "tests/window/other_process.h"
#include "tests/window/test_manager.h"

namespace {

wchar_t AccessKey(const std::wstring& caption) {
    const size_t mark = caption.find(L'&');
    return mark == std::wstring::npos ? L'\0' : static_cast<wchar_t>(towupper(caption[mark + 1]));
}

}  // namespace

TEST_CASE("the tab key visits the tabs, the page from top to bottom, then OK, Cancel and Apply") {
    KeyboardWindow window;
    for (const wchar_t* const name : {L"cmdApply", L"cmdRemoveURL", L"cmdClearList"}) {
        EnableWindow(window.Control(name), TRUE);
    }
    for (int page = 0; page < kPages; ++page) {
        CAPTURE(page);
        window.Page(page);
        window.Focus(L"tab");
        Rows expected = kTabStops[static_cast<size_t>(page)];
        expected.insert(expected.end(), kFrameButtons.begin(), kFrameButtons.end());
        expected.push_back(L"tab");
        Rows visited;
        for (size_t i = 0; i < expected.size(); ++i)
            visited.push_back(window.After({VK_TAB}));
        CHECK(visited == expected);

        std::reverse(expected.begin(), expected.end());
        std::rotate(expected.begin(), expected.begin() + 1, expected.end());
        visited.clear();
        for (size_t i = 0; i < expected.size(); ++i)
            visited.push_back(window.After({VK_SHIFT, VK_TAB}));
        CHECK(visited == expected);
    }
    CHECK(window.IsShown());
}

TEST_CASE("Ctrl with Tab or the page keys walks the six pages round and takes the focus along") {
    KeyboardWindow window;
    window.Focus(L"tab");
    for (const int page : {1, 2, 3, 4, 5, 0})
        CHECK(window.PageBecomes(page, {VK_CONTROL, VK_TAB}));
    for (const int page : {5, 4, 3, 2, 1, 0})
        CHECK(window.PageBecomes(page, {VK_CONTROL, VK_SHIFT, VK_TAB}));
    for (const int page : {1, 2, 3, 4, 5, 0})
        CHECK(window.PageBecomes(page, {VK_CONTROL, VK_NEXT}));
    for (const int page : {5, 4, 3, 2, 1, 0})
        CHECK(window.PageBecomes(page, {VK_CONTROL, VK_PRIOR}));
    CHECK(window.Focused() == L"tab");

    window.Focus(L"txtPause");
    for (const int page : {1, 2, 3, 4, 5}) {
        const std::wstring& first = kTabStops[static_cast<size_t>(page)].front();
        CHECK(window.FocusBecomes(first, {VK_CONTROL, VK_TAB}));
        CHECK(window.Page() == page);
        CHECK(IsWindowVisible(window.Find(first)));
    }
    // The arrows move along the tabs themselves.
    window.Focus(L"tab");
    CHECK(window.PageBecomes(4, {VK_LEFT}));
    CHECK(window.PageBecomes(5, {VK_RIGHT}));
    CHECK(window.Focused() == L"tab");
}

TEST_CASE("Esc hides the window from wherever the focus is, and shows the stored settings again") {
    KeyboardWindow window;
    for (const wchar_t* const name : {L"txtPause", L"chkPlaySound", L"cmdOK", L"tab", L"cboPauseKey"}) {
        CAPTURE(std::wstring(name));
        window.Bring();
        window.Page(0);
        window.Type(L"txtPause", L"17");
        window.Focus(name);
        CHECK(window.Hides({VK_ESCAPE}));
        CHECK(WaitUntil([&] { return window.Text(L"txtPause") == L"5"; }));
    }
    CHECK(Setting(L"Settings", L"txtPause") == L"5000");
    window.Bring();
    CHECK(window.Focused() == L"cboPauseKey");
    window.Focus(L"txtSpeed");
    CHECK(window.Hides({VK_MENU, VK_F4}));
    CHECK(Get(window.Form().Get(), L"m_oShellIcon").Value().pdispVal != nullptr);
}

TEST_CASE("Enter presses the button with the focus, and nothing where none has it") {
    KeyboardWindow window;
    window.Type(L"txtPause", L"17");
    EnableWindow(window.Control(L"cmdApply"), TRUE);
    for (const auto& [page, name] : {std::pair{0, L"txtPause"},
                                     {0, L"txtSpeed"},
                                     {0, L"cboPauseKey"},
                                     {0, L"tab"},
                                     {1, L"lstExclude"},
                                     {3, L"lvwBanners"}}) {
        CAPTURE(std::wstring(name));
        window.Page(page);
        window.Focus(name);
        PressKeys({VK_RETURN});
        Sleep(kSettleTime);
        CHECK(window.IsShown());
        CHECK(window.Focused() == name);
        CHECK(window.Page() == page);
    }
    CHECK(window.Text(L"txtPause") == L"17");
    CHECK(Setting(L"Settings", L"txtPause") == L"5000");
    CHECK(IsWindowEnabled(window.Control(L"cmdApply")));

    window.Page(1);
    window.Focus(L"cmdAddURL");
    CHECK(window.Opens(L"Add Web Site URL", {VK_RETURN}));
    CHECK(window.IsShown());

    window.Focus(L"cmdApply");
    PressKeys({VK_RETURN});
    CHECK(WaitUntil([&] { return !IsWindowEnabled(window.Control(L"cmdApply")); }));
    CHECK(Setting(L"Settings", L"txtPause") == L"17000");
    CHECK(window.IsShown());

    window.Page(0);
    window.Type(L"txtPause", L"18");
    window.Focus(L"cmdOK");
    CHECK(window.Hides({VK_RETURN}));
    CHECK(WaitUntil([] { return Setting(L"Settings", L"txtPause") == L"18000"; }));

    window.Bring();
    window.Type(L"txtPause", L"19");
    window.Focus(L"cmdCancel");
    CHECK(window.Hides({VK_RETURN}));
    CHECK(WaitUntil([&] { return window.Text(L"txtPause") == L"18"; }));
}

TEST_CASE("access keys reach the buttons of the page that is shown, and those of the frame") {
    KeyboardWindow window;
    window.Page(0);
    CHECK(window.FocusBecomes(L"cmdTestSound", {VK_MENU, 'T'}));
    CHECK(window.Opens(L"Select a Sound File", {VK_MENU, 'F'}));
    window.Page(1);
    window.Focus(L"tab");
    CHECK(window.Opens(L"Add Web Site URL", {VK_MENU, 'U'}));
    // The Apply button was enabled by the dialog, cancelled as it was.
    PressKeys({VK_MENU, 'A'});
    CHECK(WaitUntil([&] { return !IsWindowEnabled(window.Control(L"cmdApply")); }));
    window.Page(2);
    window.Focus(L"tab");
    CHECK(window.FocusBecomes(L"cmdRefreshLog", {VK_MENU, 'R'}));
    CHECK(window.FocusBecomes(L"cmdAddTo", {VK_MENU, 'L'}));
    window.Page(3);
    window.Focus(L"tab");
    CHECK(window.Opens(L"New Banner Height and Width", {VK_MENU, 'N'}));
    CHECK(window.FocusBecomes(L"cmdRemoveSize", {VK_MENU, 'M'}));
    window.Page(4);
    window.Focus(L"tab");
    CHECK(window.Opens(L"Add Search Address", {VK_MENU, 'S'}));
    CHECK(window.FocusBecomes(L"cmdEditSearch", {VK_MENU, 'E'}));

    // Those of hidden pages and of disabled buttons do nothing.
    window.Page(5);
    window.Focus(L"tab");
    for (const WORD key : {'F', 'T', 'U', 'R', 'L', 'N', 'M', 'S', 'E'})
        PressKeys({VK_MENU, key});
    Sleep(kSettleTime);
    CHECK(window.Focused() == L"tab");
    CHECK(GetForegroundWindow() == window.Window());
    // Clear List is disabled: the key that it shares is Cancel's.
    window.Page(2);
    window.Focus(L"tab");
    CHECK(window.Hides({VK_MENU, 'C'}));
    window.Bring();
    CHECK(window.Hides({VK_MENU, 'O'}));
}

TEST_CASE("access keys are unique on their page but for the two that the captions force") {
    TestManager manager;
    std::map<int, std::map<wchar_t, Rows>> keys;
    for (int page = 0; page < kPages; ++page) {
        Rows names = kTabStops[static_cast<size_t>(page)];
        names.insert(names.end(), kFrameButtons.begin(), kFrameButtons.end());
        for (const std::wstring& name : names) {
            const HWND control = manager.Control(name.c_str());
            if (ClassOf(control) != L"Button") continue;
            if (const wchar_t key = AccessKey(ShownText(control))) keys[page][key].push_back(name);
        }
    }
    Rows shared;
    for (const auto& [page, ofPage] : keys) {
        for (const auto& [key, names] : ofPage) {
            if (names.size() == 1) continue;
            std::wstring text = std::to_wstring(page) + L' ' + key;
            for (const std::wstring& name : names)
                text += L' ' + name;
            shared.push_back(text);
        }
    }
    CHECK(shared == Rows{L"2 C cmdClearList cmdCancel", L"4 O cmdRemoveSearch cmdOK"});
}
