#include "lists/centre_on_owner.h"

#include <algorithm>

void CentreOnOwner(HWND dialog) noexcept {
    RECT bounds{};
    RECT ownerBounds{};
    if (!GetWindowRect(dialog, &bounds) || !GetWindowRect(GetWindow(dialog, GW_OWNER), &ownerBounds)) return;
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    if (!GetMonitorInfoW(MonitorFromRect(&ownerBounds, MONITOR_DEFAULTTONEAREST), &monitor)) return;

    const LONG width = bounds.right - bounds.left;
    const LONG height = bounds.bottom - bounds.top;
    const LONG left = (ownerBounds.left + ownerBounds.right - width) / 2;
    const LONG top = (ownerBounds.top + ownerBounds.bottom - height) / 2;
    const RECT& work = monitor.rcWork;
    // A dialog larger than the work area keeps its title in view: the left and upper edge win.
    SetWindowPos(dialog, nullptr, std::max(std::min(left, work.right - width), work.left),
                 std::max(std::min(top, work.bottom - height), work.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
