#include "tray/bas_shell_notify.h"

#include "platform/automation_error.h"
#include "platform/guard.h"

LONG g_lngConfigHwnd = 0;

namespace {

// The window property that holds the address of the window's previous procedure.
constexpr char kOldWndProc[] = "OldWndProc";

TrayWindow* trayWindow = nullptr;

HWND ConfigWindow() {
    return static_cast<HWND>(LongToHandle(g_lngConfigHwnd));
}

LONG PreviousProcedure(HWND hwnd) {
    return HandleToLong(GetPropA(hwnd, kOldWndProc));
}

// gesture: the mouse message over the icon.
void OnTrayCallback(LPARAM gesture) {
    if (trayWindow == nullptr) return;
    switch (gesture) {
        case WM_LBUTTONDBLCLK:
            ResumeNext([] { trayWindow->ShowModeless(); });
            break;
        case WM_RBUTTONUP:
            // The menu of a window in the background would stay open when the user clicks elsewhere.
            SetForegroundWindow(ConfigWindow());
            ResumeNext([] { trayWindow->PopupTrayMenu(true); });
            break;
        default:
            break;
    }
}

LRESULT Forward(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    const LONG previous = PreviousProcedure(hwnd);
    // Unhooked while somebody who subclassed the window after us still calls on.
    if (previous == 0) return 0;
    return CallWindowProcA(reinterpret_cast<WNDPROC>(LongToPtr(previous)), hwnd, message, wParam, lParam);
}

}  // namespace

void SetTrayWindow(TrayWindow* window) noexcept {
    trayWindow = window;
}

bool HookTrayWindow(HWND hwnd) {
    if (PreviousProcedure(hwnd) != 0) return false;
    const LONG previous =
        SetWindowLongA(hwnd, GWL_WNDPROC, PtrToLong(reinterpret_cast<void*>(&TrayWindowProc)));
    if (previous == 0) return false;
    if (SetPropA(hwnd, kOldWndProc, LongToHandle(previous)) != FALSE) {
        return true;
    }
    // UnhookTrayWindow goes by the very property that is missing.
    UnhookTrayWindow(hwnd);
    SetWindowLongA(hwnd, GWL_WNDPROC, previous);
    return false;
}

void UnhookTrayWindow(HWND hwnd) {
    const LONG previous = PreviousProcedure(hwnd);
    if (previous == 0) return;
    if (RemovePropA(hwnd, kOldWndProc) != nullptr) SetWindowLongA(hwnd, GWL_WNDPROC, previous);
}

LRESULT CALLBACK TrayWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (hwnd == ConfigWindow()) {
        if (message == kTrayCallback) {
            Guarded([&] { OnTrayCallback(lParam); });
            return 0;
        }
    } else if (message == WM_NCDESTROY) {
        UnhookTrayWindow(hwnd);
        return 0;
    }
    return Forward(hwnd, message, wParam, lParam);
}
