// Windows' part in a move between monitors, which Wine leaves out.
#pragma once

#include <windows.h>

#include "platform/dpi.h"

// What Windows does when the window comes to a monitor of this resolution: it asks for the size there, and
// then suggests bounds of that size. Returns the bounds that it suggests.
inline RECT MoveToMonitor(HWND window, int dpi) {
    constexpr POINT kPlace{40, 30};

    SIZE size{};
    SendMessageW(window, kGetDpiScaledSize, static_cast<WPARAM>(dpi), reinterpret_cast<LPARAM>(&size));
    const RECT suggested{kPlace.x, kPlace.y, kPlace.x + size.cx, kPlace.y + size.cy};
    SendMessageW(window, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(dpi, dpi)),
                 reinterpret_cast<LPARAM>(&suggested));
    return suggested;
}
