// Where the window appears.
#include <doctest.h>

#include "tests/entry/inside.h"

namespace {

HWND Window() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
}

RECT Bounds() {
    RECT bounds{};
    GetWindowRect(Window(), &bounds);
    return bounds;
}

}  // namespace

TEST_CASE("a window whose monitor has gone is shown in the middle of the nearest one, in its own size") {
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    const RECT before = Bounds();
    SetWindowPos(Window(), nullptr, -20000, -20000, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    REQUIRE(MonitorFromWindow(Window(), MONITOR_DEFAULTTONULL) == nullptr);

    inside.Instance(formShow);
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

TEST_CASE("a window on a monitor is shown where it is") {
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    SetWindowPos(Window(), nullptr, 30, 40, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    inside.Instance(formShow);
    CHECK(Bounds().left == 30);
    CHECK(Bounds().top == 40);
}

TEST_CASE("a window that was minimised is restored when it is shown again") {
    InsideWithoutEngine inside;
    const auto config = inside.Instance(formShow);
    ShowWindow(Window(), SW_MINIMIZE);
    REQUIRE(IsIconic(Window()));
    inside.Instance(formShow);
    CHECK_FALSE(IsIconic(Window()));
    CHECK(IsWindowVisible(Window()));
}
