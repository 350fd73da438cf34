// The menu of the tray icon.
#pragma once

#include <windows.h>

#include "platform/callback.h"
#include "platform/handle.h"

// Its items, by their command numbers.
enum TrayMenuItem : UINT {
    mnuStartKiller = 1,
    mnuStopKiller,
    mnuSep1,
    mnuPauseKiller,
    mnuSep2,
    mnuShowConfig,
    mnuExit,
};

// As designed, every item is enabled.
class TrayMenu {
public:
    // Throws AutomationError when the menu cannot be made.
    TrayMenu();
    TrayMenu(const TrayMenu&) = delete;
    TrayMenu& operator=(const TrayMenu&) = delete;

    // Each is raised after the menu has closed on the item.
    Event mnuStartKiller_Click;
    Event mnuStopKiller_Click;
    Event mnuPauseKiller_Click;
    Event mnuShowConfig_Click;
    Event mnuExit_Click;

    void EnableDesignedMenu() noexcept;
    void EnableRunningMenu() noexcept;
    void EnableStoppedMenu() noexcept;

    // Shows the menu at the cursor until the user chooses or leaves it; nothing while it is shown already.
    // owner: a window of this thread, in the foreground, so that the menu closes on a click elsewhere.
    // pauseIsDefault: mnuPauseKiller is the default item, otherwise none is. Messages are dispatched
    // meanwhile: the caller keeps this object alive.
    void PopUp(HWND owner, bool pauseIsDefault);

    // The pop-up menu mnuConfig.
    HMENU Handle() const noexcept { return GetSubMenu(m_bar.Get(), 0); }

private:
    void Enable(TrayMenuItem item, bool enabled) noexcept;
    void RaiseClick(UINT item) const;

    // A menu bar that no window has; it gives mnuConfig its caption.
    MenuHandle m_bar;
    bool m_shown = false;
};
