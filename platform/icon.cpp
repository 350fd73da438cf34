#include "platform/icon.h"

namespace {

HICON Load(int resource, int widthMetric, int heightMetric, UINT flags) noexcept {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource), IMAGE_ICON,
                                         GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric),
                                         flags));
}

}  // namespace

IconHandle LoadSmallIcon(int resource) {
    return IconHandle(Load(resource, SM_CXSMICON, SM_CYSMICON, 0));
}

void SetWindowIcons(HWND window, int resource) noexcept {
    SendMessageW(window, WM_SETICON, ICON_BIG,
                 reinterpret_cast<LPARAM>(Load(resource, SM_CXICON, SM_CYICON, LR_SHARED)));
    SendMessageW(window, WM_SETICON, ICON_SMALL,
                 reinterpret_cast<LPARAM>(Load(resource, SM_CXSMICON, SM_CYSMICON, LR_SHARED)));
}
