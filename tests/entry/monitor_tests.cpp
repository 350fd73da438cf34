// Where the window appears.
#include <doctest.h>

#include "tests/entry/window_inside.h"

namespace {

RECT Bounds() {
    RECT bounds{};
    GetWindowRect(Window(), &bounds);
    return bounds;
}

}  // namespace

TEST_CASE_FIXTURE(
    InsideWithoutEngine,
    "a window whose monitor has gone is shown in the middle of the nearest one, in its own size") {
    Instance(FormHide);
    const RECT before = Bounds();
    SetWindowPos(Window(), nullptr, -20000, -20000, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    REQUIRE(MonitorFromWindow(Window(), MONITOR_DEFAULTTONULL) == nullptr);

    Instance(formShow);
    const RECT after = Bounds();
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(Window(), MONITOR_DEFAULTTONEAREST), &monitor);
    RECT inBoth{};
    IntersectRect(&inBoth, &after, &monitor.rcWork);
    CHECK(EqualRect(&inBoth, &after));
    CHECK(after.right - after.left == before.right - before.left);
    CHECK(after.bottom - after.top == before.bottom - before.top);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "a window on a monitor is shown where it is") {
    Instance(FormHide);
    SetWindowPos(Window(), nullptr, 30, 40, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    Instance(formShow);
    CHECK(Bounds().left == 30);
    CHECK(Bounds().top == 40);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "a window that was minimised is restored when it is shown again") {
    Instance(formShow);
    ShowWindow(Window(), SW_MINIMIZE);
    REQUIRE(IsIconic(Window()));
    Instance(formShow);
    CHECK_FALSE(IsIconic(Window()));
    CHECK(IsShown());
}
