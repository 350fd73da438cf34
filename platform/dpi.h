// Resolutions: a window has that of the monitor it lies on, in dots per inch. What asks for one has come with
// Windows 10; earlier systems have one resolution for all monitors.
#pragma once

#include <windows.h>

inline constexpr int kDefaultDpi = USER_DEFAULT_SCREEN_DPI;

// WM_GETDPISCALEDSIZE, which the headers keep from programs that run on earlier systems, too.
inline constexpr UINT kGetDpiScaledSize = 0x02E4;

// Of the window's monitor.
int DpiOf(HWND window) noexcept;

// Of the monitor that the taskbar lies on.
int TaskbarDpi() noexcept;

// GetSystemMetrics for a monitor of this resolution.
int SystemMetric(int index, int dpi) noexcept;

// The font in which the user wants messages, and dialogs, to be written. False when Windows does not tell.
bool MessageFont(int dpi, LOGFONTW& font) noexcept;

// Makes the bounds of a client area those of the window round it.
void AddFrame(RECT& bounds, DWORD style, DWORD exStyle, int dpi) noexcept;

// Keeps the dialog manager from scaling a dialog that scales itself.
void ScaleByItself(HWND dialog) noexcept;
