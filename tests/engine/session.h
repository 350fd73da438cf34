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
    // Makes the manager's window, hidden. Start forgets what the engine was called by that.
    void Open();
    void Start();

    // What a user expects of the manager, with an engine or without: the window, its close box, Open in the
    // menu, Apply, Refresh List, the icon.
    void CheckWorks();

    bool Visible() const { return IsWindowVisible(window) != FALSE; }
    bool Marked() const { return IsWindowEnabled(apply) != FALSE; }

    // Presses a button and waits until the manager has handled that. Not for what opens a dialog.
    void Press(const wchar_t* button);

    // Waits until everything posted to the manager before has been handled.
    void Settle();

    // One click on the upper arrow of udbSpeed.
    void ChangeSpeed();

    // Null when no dialog comes.
    HWND WaitForDialog();

    StandIn engine;
    Manager manager{BeginTrayRecord()};
    HWND window = nullptr;
    HWND apply = nullptr;
};

// One that is done with its start.
struct StartedSession : Session {
    StartedSession();
};
