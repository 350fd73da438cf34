// Where dialogs and windows appear on the screen.
#include <doctest.h>

#include <windows.h>

#include <string>

#include "platform/controls/placement.h"

namespace {

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

}  // namespace

TEST_CASE("a dialog stands in the middle of its owner, but on the screen, or shows its upper left corner") {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromPoint({}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const RECT work = monitor.rcWork;
    const LONG x = (work.left + work.right) / 2;
    const LONG y = (work.top + work.bottom) / 2;
    const SIZE tooLarge{work.right - work.left + 50, work.bottom - work.top + 50};
    struct Row {
        std::string what;
        RECT owner;
        LONG RECT::*edge;  // of the dialog
        LONG place;
        SIZE size{200, 120};
    };
    const Row rows[] = {
        {"across the middle", {300, 200, 700, 500}, &RECT::left, 400},
        {"down the middle", {300, 200, 700, 500}, &RECT::top, 290},
        {"the left edge", {work.left, y - 20, work.left + 40, y + 20}, &RECT::left, work.left},
        {"the right edge", {work.right - 40, y - 20, work.right, y + 20}, &RECT::right, work.right},
        {"the upper edge", {x - 20, work.top, x + 20, work.top + 40}, &RECT::top, work.top},
        {"the lower edge", {x - 20, work.bottom - 40, x + 20, work.bottom}, &RECT::bottom, work.bottom},
        {"too wide", {300, 200, 400, 300}, &RECT::left, work.left, tooLarge},
        {"too high", {300, 200, 400, 300}, &RECT::top, work.top, tooLarge},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        const Window owner(row.owner, nullptr);
        const Window dialog({0, 0, row.size.cx, row.size.cy}, owner.hwnd);
        CentreOnOwner(dialog.hwnd);
        RECT bounds{};
        GetWindowRect(dialog.hwnd, &bounds);
        CHECK(bounds.*row.edge == row.place);
        CHECK(bounds.right - bounds.left == row.size.cx);
        CHECK(bounds.bottom - bounds.top == row.size.cy);
    }
}
