// Which messages of the main loop are the window's.
#include <doctest.h>

#include "tests/entry/window_inside.h"
#include "tests/support/plain_window.h"

TEST_CASE_FIXTURE(InsideWithoutEngine, "keys of another window, or without a window, are left alone") {
    Instance(FormHide);
    const PlainWindow other;
    {
        const HeldKeys held{VK_CONTROL};
        for (const WPARAM key : {VK_TAB, VK_NEXT, VK_PRIOR, VK_ESCAPE, VK_RETURN})
            CHECK_FALSE(IsFormMessage(Key(other.Hwnd(), key)));
        CHECK_FALSE(IsFormMessage(Key(nullptr, VK_TAB)));
        CHECK(SelectedTab() == 0);
    }
    CHECK(IsFormMessage(Key(ControlOf(IDC_TAB), VK_TAB)));
    g_frmConfig->Unload();
    for (const HWND window : {other.Hwnd(), HWND{}})
        CHECK_FALSE(IsFormMessage(Key(window, VK_TAB)));
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "Ctrl with Tab, Page Down and Page Up walks the pages round, whoever has the focus") {
    Instance(FormHide);
    for (const HWND focus : {Window(), GetDlgItem(Window(), IDC_TAB), GetDlgItem(Window(), IDC_CMDOK)}) {
        const HeldKeys held{VK_CONTROL};
        for (const int expected : {1, 2, 3, 4, 5, 0}) {
            CHECK(IsFormMessage(Key(focus, VK_TAB)));
            CHECK(SelectedTab() == expected);
        }
        CHECK(IsFormMessage(Key(focus, VK_PRIOR)));
        CHECK(SelectedTab() == 5);
        CHECK(IsFormMessage(Key(focus, VK_NEXT)));
        CHECK(SelectedTab() == 0);
        const HeldKeys shift{VK_CONTROL, VK_SHIFT};
        CHECK(IsFormMessage(Key(focus, VK_TAB)));
        CHECK(SelectedTab() == 5);
        CHECK(IsFormMessage(Key(focus, VK_NEXT)));
        CHECK(SelectedTab() == 0);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "where another program has taken the tabs away the page keys do nothing") {
    Instance(formShow);
    SendDlgItemMessageW(Window(), IDC_TAB, TCM_DELETEALLITEMS, 0, 0);
    SetFocus(ControlOf(IDC_CMDOK));
    const HeldKeys held{VK_CONTROL};
    for (const WPARAM key : {VK_TAB, VK_NEXT, VK_PRIOR}) {
        CHECK(IsFormMessage(Key(ControlOf(IDC_CMDOK), key)));
        CHECK(SelectedTab() == -1);
        CHECK(GetFocus() == ControlOf(IDC_CMDOK));
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "the pages stay with Alt held, without Ctrl or when a key goes up") {
    Instance(FormHide);
    const HWND tabs = ControlOf(IDC_TAB);
    {
        const HeldKeys held{VK_CONTROL, VK_MENU};
        IsFormMessage(Key(tabs, VK_TAB));
        IsFormMessage(Key(tabs, VK_NEXT));
        CHECK(SelectedTab() == 0);
    }
    {
        const HeldKeys none{};
        IsFormMessage(Key(tabs, VK_TAB));
        CHECK(SelectedTab() == 0);
    }
    const HeldKeys held{VK_CONTROL};
    MSG released = Key(tabs, VK_TAB);
    released.message = WM_KEYUP;
    IsFormMessage(released);
    CHECK(SelectedTab() == 0);
}
