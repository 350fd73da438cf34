// The manager's own dialogs without code behind them, and an icon in the notification area.
#include <windows.h>
#include <shellapi.h>

#include "app/resource.h"
#include "bench/bare_server/bare_server.h"
#include "bench/support/tabbed_dialog.h"

const CLSID kBareServerClass = kDialogServer.classId;

namespace {

void AddTrayIcon(HWND window) {
    NOTIFYICONDATAA icon{};
    icon.cbSize = NOTIFYICONDATAA_V1_SIZE;
    icon.hWnd = window;
    icon.uID = 1;
    icon.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    icon.uCallbackMessage = WM_USER + 1;
    icon.hIcon = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_TRAY_REST));
    lstrcpyA(icon.szTip, "Bare");
    Shell_NotifyIconA(NIM_ADD, &icon);
}

}  // namespace

HWND MakeWindow() {
    const HWND window = MakeTabbedDialog();
    AddTrayIcon(window);
    return window;
}
