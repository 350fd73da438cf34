// What controls of a dialog do with the focus, and take for the user's choice.
#include <doctest.h>

#include <windows.h>

#include "platform/controls/button.h"
#include "platform/controls/combo_box.h"
#include "tests/support/test_window.h"

TEST_CASE("a control that is disabled gives the focus to the next one, and only then") {
    Button apply(L"apply", 100);
    Button cancel(L"cancel", 101);
    TestWindow window({&apply, &cancel});
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetFocus(apply.Hwnd());
    REQUIRE(GetFocus() == apply.Hwnd());
    apply.Enabled(true);
    cancel.Enabled(false);
    CHECK(GetFocus() == apply.Hwnd());
    cancel.Enabled(true);
    apply.Enabled(false);
    CHECK(GetFocus() == cancel.Hwnd());
}

TEST_CASE("a combo box raises its click for a choice, and not for being focused, opened or closed") {
    ComboBox box(L"box", 100);
    TestWindow window({&box});
    int clicks = 0;
    box.Click = [&] { ++clicks; };
    const auto notify = [&](int code) {
        SendMessageW(window.Hwnd(), WM_COMMAND, MAKEWPARAM(box.Id(), code),
                     reinterpret_cast<LPARAM>(box.Hwnd()));
    };
    for (const int code : {CBN_SETFOCUS, CBN_DROPDOWN, CBN_SELENDOK, CBN_SELENDCANCEL, CBN_CLOSEUP,
                           CBN_KILLFOCUS, CBN_DBLCLK, CBN_EDITCHANGE, CBN_EDITUPDATE}) {
        CAPTURE(code);
        notify(code);
        CHECK(clicks == 0);
    }
    notify(CBN_SELCHANGE);
    CHECK(clicks == 1);
}
