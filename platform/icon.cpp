#include "platform/icon.h"

#include <utility>

#include "platform/dpi.h"

IconHandle LoadIconOfSize(int resource, int width, int height) noexcept {
    return IconHandle(static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource),
                                                    IMAGE_ICON, width, height, LR_DEFAULTCOLOR)));
}

IconHandle LoadSmallIcon(int resource, int dpi) noexcept {
    return LoadIconOfSize(resource, SystemMetric(SM_CXSMICON, dpi), SystemMetric(SM_CYSMICON, dpi));
}

void WindowIcons::Set(HWND window, int resource, int dpi) noexcept {
    IconHandle large = LoadIconOfSize(resource, SystemMetric(SM_CXICON, dpi), SystemMetric(SM_CYICON, dpi));
    IconHandle small = LoadSmallIcon(resource, dpi);
    SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(large.Get()));
    SendMessageW(window, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(small.Get()));
    m_large = std::move(large);
    m_small = std::move(small);
}
