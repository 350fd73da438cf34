// The hook on the window that receives the icon's mouse messages.
#pragma once

#include <windows.h>

// What the icon's gestures do to the configuration window. Either may throw AutomationError.
class TrayWindow {
public:
    virtual void ShowModeless() = 0;

    // Pops up the tray menu at the cursor. pauseIsDefault: mnuPauseKiller is its default item; otherwise none
    // is.
    virtual void PopupTrayMenu(bool pauseIsDefault) = 0;

protected:
    ~TrayWindow() = default;
};

// The configuration window, known to TrayWindowProc by g_lngConfigHwnd. Null: gestures do nothing. The caller
// keeps it alive until it sets another.
void SetTrayWindow(TrayWindow* window) noexcept;

// The handle of the configuration window; 0 until its creation has returned.
extern LONG g_lngConfigHwnd;

// The message by which the icon reports the mouse.
inline constexpr UINT kTrayCallback = 0x401;

// Puts TrayWindowProc in front of the window's procedure. Returns whether it did; a window that has it
// already, and one where it fails, stays as it was.
bool HookTrayWindow(HWND hwnd);

// Puts the window's own procedure back; nothing where TrayWindowProc was not put in front.
void UnhookTrayWindow(HWND hwnd);

LRESULT CALLBACK TrayWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
