// The real manager with the real stand-in engine.
#pragma once

#include <doctest.h>

#include <string>

#include "tests/engine/stand_in.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/manager.h"
#include "tests/support/other_process.h"

// COM gives up a server that does not serve after 30 seconds: a call that takes as long waits for what is
// gone.
inline constexpr DWORD kHang = 25000;  // milliseconds

// Members are made in their order: the engine gets its orders before the manager starts.
struct Session {
    // Makes the manager's window, hidden. Start forgets what the engine was called by that.
    void Open() {
        window = manager.Window();
        apply = manager.Control(L"cmdApply");
    }
    void Start() {
        Open();
        engine.ClearCalls();
    }

    bool Visible() const { return IsWindowVisible(window) != FALSE; }
    bool Marked() const { return IsWindowEnabled(apply) != FALSE; }
    static std::wstring StoredSpeed() { return Setting(L"Settings", L"txtSpeed"); }

    // Presses a button that opens no dialog and waits until the manager has handled that: a client's call
    // stands behind the posted messages in its queue. Posted, because a program that is in the midst of
    // another's SendMessage may not call a third by COM.
    void Press(const wchar_t* button) {
        PostMessageW(manager.Control(button), BM_CLICK, 0, 0);
        Get(manager.Form().Get(), L"Caption");
    }

    // One click on the upper arrow of udbSpeed.
    void ChangeSpeed() { ClickArrow(manager.Control(L"udbSpeed"), true); }

    // What a user expects of the manager, with an engine or without: the window, its close box, Open in the
    // menu, Apply, Refresh List, the icon.
    void CheckWorks() {
        manager.Instance(formShow);
        CHECK(Visible());
        const std::wstring stored = StoredSpeed();
        ChangeSpeed();
        const std::wstring changed = manager.Text(L"txtSpeed");
        // The close box hides the window with what is not applied.
        PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
        CHECK(WaitUntil([&] { return !Visible(); }));
        Command(window, L'o');
        CHECK(WaitUntil([&] { return Visible() && GetForegroundWindow() == window; }));
        CHECK(manager.Window() == window);
        CHECK(manager.Text(L"txtSpeed") == changed);
        CHECK(Marked());
        CHECK(StoredSpeed() == stored);
        const DWORD start = GetTickCount();
        Press(L"cmdApply");
        CHECK(WaitUntil([&] { return !Marked(); }));
        CHECK(GetTickCount() - start < kHang);
        CHECK(StoredSpeed() != stored);
        Press(L"cmdRefreshLog");
        CHECK(WaitForIcon());
        CHECK(ShellHasIcon(window));
    }

    StandIn engine;
    Manager manager{BeginTrayRecord()};
    HWND window = nullptr;
    HWND apply = nullptr;
};

// One that is done with its start.
struct StartedSession : Session {
    StartedSession() {
        Start();
        REQUIRE(WaitForIcon());
    }
};
