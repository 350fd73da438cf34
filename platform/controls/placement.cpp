#include "platform/controls/placement.h"

#include <algorithm>

namespace {

// The area beside the taskbar; false when the monitor has just gone.
bool WorkArea(HMONITOR monitor, RECT& area) noexcept {
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (!GetMonitorInfoW(monitor, &info)) return false;
    area = info.rcWork;
    return true;
}

void CentreIn(const RECT& middle, const RECT& work, HWND window) noexcept {
    RECT bounds{};
    if (!GetWindowRect(window, &bounds)) return;
    const LONG width = bounds.right - bounds.left;
    const LONG height = bounds.bottom - bounds.top;
    const LONG left = (middle.left + middle.right - width) / 2;
    const LONG top = (middle.top + middle.bottom - height) / 2;
    // A window larger than the work area keeps its title in view: the left and upper edge win.
    SetWindowPos(window, nullptr, std::max(std::min(left, work.right - width), work.left),
                 std::max(std::min(top, work.bottom - height), work.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

void CentreOnOwner(HWND dialog) noexcept {
    RECT owner{};
    RECT work{};
    if (!GetWindowRect(GetWindow(dialog, GW_OWNER), &owner)) return;
    if (!WorkArea(MonitorFromRect(&owner, MONITOR_DEFAULTTONEAREST), work)) return;
    CentreIn(owner, work, dialog);
}

void CentreOnMonitor(HWND window) noexcept {
    RECT work{};
    if (WorkArea(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), work)) CentreIn(work, work, window);
}

void MoveOntoMonitor(HWND window) noexcept {
    if (IsIconic(window) || MonitorFromWindow(window, MONITOR_DEFAULTTONULL) != nullptr) return;
    CentreOnMonitor(window);
}
