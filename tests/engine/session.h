// The real manager with the real stand-in engine.
#pragma once

#include "tests/engine/stand_in.h"
#include "tests/engine/tray.h"
#include "tests/support/manager.h"

// COM gives up a server that does not serve after 30 seconds: a call that takes as long waits for what is
// gone.
inline constexpr DWORD kHang = 25000;  // milliseconds

// Members are made in their order: the engine gets its orders before the manager starts.
struct Session {
    explicit Session(bool keepSettings = false) : manager(BeginTrayRecord(), keepSettings) {}

    // Makes the manager's window, hidden. Start forgets what the engine was called by that.
    void Open();
    void Start();

    // What a user expects of the manager, with an engine or without: Apply, Refresh List, the window, the
    // icon.
    void CheckWorks(bool hasEngine = true);

    HWND Window() { return window; }
    bool Visible() const { return IsWindowVisible(window) != FALSE; }
    bool Marked() { return IsWindowEnabled(apply) != FALSE; }

    // Presses a button and waits until the manager has handled that. Not for what opens a dialog.
    void Press(const wchar_t* button);

    // Waits until everything posted to the manager before has been handled.
    void Settle();

    // One click on an arrow of a spin control.
    void Spin(const wchar_t* upDown, bool up);

    // Enables cmdApply from outside and presses it.
    void Apply();

    // Presses a button that opens a dialog, and returns that; null when none comes.
    HWND OpenDialog(const wchar_t* button);
    HWND WaitForDialog();
    bool CancelDialog(HWND dialog);

    StandIn engine;
    Manager manager;
    HWND window = nullptr;
    HWND apply = nullptr;
};
