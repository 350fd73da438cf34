// What the tray icon and its menu do to the configuration window.
#pragma once

#include <windows.h>

#include <optional>

#include "platform/com/event_connection.h"
#include "tray/bas_shell_notify.h"
#include "tray/tray_menu.h"

class TrayGestures {
public:
    // Listens to menu's last two items. b_OKtoUnload: lets the window close on WM_CLOSE. All outlive this
    // object.
    TrayGestures(TrayMenu& menu, TrayWindow& window, bool& b_OKtoUnload);
    TrayGestures(const TrayGestures&) = delete;
    TrayGestures& operator=(const TrayGestures&) = delete;

    // configHwnd: the configuration window, from now on. shellIcon: the tray icon, whose events are
    // listened to until Disconnect and which is held that long. Throws AutomationError when it has no events.
    void Connect(HWND configHwnd, IUnknown* shellIcon);
    void Disconnect() noexcept { m_iconEvents.reset(); }

    void mnuShowConfig_Click();
    void mnuExit_Click();

    // x: the mouse message over the icon, in twips. Nothing else is looked at, and nothing is changed.
    void m_oShellIcon_MouseUp(SHORT& Button, SHORT& Shift, FLOAT& x, FLOAT& y);

private:
    TrayWindow& m_window;
    bool& b_OKtoUnload;
    HWND m_configHwnd = nullptr;
    std::optional<EventConnection> m_iconEvents;
};
