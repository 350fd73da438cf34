// Where dialogs and windows appear on the screen.
#include <doctest.h>

#include <windows.h>

#include "platform/controls/placement.h"

namespace {

constexpr LONG kDialogWidth = 200;
constexpr LONG kDialogHeight = 120;

RECT WorkArea() {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromPoint({}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    return monitor.rcWork;
}

// A hidden window without a frame: it gets exactly the place that it asks for.
struct Window {
    Window(RECT bounds, HWND owner)
        : hwnd(CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"", WS_POPUP, bounds.left, bounds.top,
                               bounds.right - bounds.left, bounds.bottom - bounds.top, owner, nullptr,
                               nullptr, nullptr)) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() { DestroyWindow(hwnd); }

    const HWND hwnd;
};

// Where a dialog lands whose owner has these bounds.
RECT Centred(RECT ownerBounds, LONG width = kDialogWidth, LONG height = kDialogHeight) {
    const Window owner(ownerBounds, nullptr);
    const Window dialog({0, 0, width, height}, owner.hwnd);
    CentreOnOwner(dialog.hwnd);
    RECT bounds{};
    GetWindowRect(dialog.hwnd, &bounds);
    CHECK(bounds.right - bounds.left == width);
    CHECK(bounds.bottom - bounds.top == height);
    return bounds;
}

}  // namespace

TEST_CASE("a dialog stands in the middle of its owner") {
    const RECT bounds = Centred({300, 200, 700, 500});
    CHECK(bounds.left == 400);
    CHECK(bounds.top == 290);
}

TEST_CASE("a dialog stays on the screen where its owner stands at an edge") {
    const RECT work = WorkArea();
    const LONG middleX = (work.left + work.right) / 2;
    const LONG middleY = (work.top + work.bottom) / 2;
    CHECK(Centred({work.left, middleY - 20, work.left + 40, middleY + 20}).left == work.left);
    CHECK(Centred({work.right - 40, middleY - 20, work.right, middleY + 20}).right == work.right);
    CHECK(Centred({middleX - 20, work.top, middleX + 20, work.top + 40}).top == work.top);
    CHECK(Centred({middleX - 20, work.bottom - 40, middleX + 20, work.bottom}).bottom == work.bottom);
}

TEST_CASE("a dialog larger than the screen shows its upper left corner") {
    const RECT work = WorkArea();
    const RECT bounds =
        Centred({300, 200, 400, 300}, work.right - work.left + 50, work.bottom - work.top + 50);
    CHECK(bounds.left == work.left);
    CHECK(bounds.top == work.top);
}
