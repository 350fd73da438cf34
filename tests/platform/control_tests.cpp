// What every control of a dialog does.
#include <doctest.h>

#include <windows.h>

#include "platform/controls/button.h"
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
