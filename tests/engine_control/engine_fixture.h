// An engine control on a window, with an engine in this process and the notices kept.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/engine_control/menu_items.h"
#include "tests/pairs/clock.h"
#include "tests/support/plain_window.h"
#include "tests/support/shown_text.h"
#include "tray/engine_control.h"

using Calls = std::vector<std::string>;

// The events of an engine object.
inline constexpr DISPID kKilled = 1;
inline constexpr DISPID kPausedEvent = 2;
inline constexpr DISPID kStartedEvent = 3;
inline constexpr DISPID kStoppedEvent = 4;

// Results of calls that fail for good: by the engine's will, and because it is gone.
inline const HRESULT kFailures[] = {E_FAIL, RPC_E_DISCONNECTED, HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)};

// The menu's commands to the engine.
struct Command {
    std::string member;
    Event TrayMenu::*item;
    bool EngineControl::*pending;
    LONG stateBefore;
    std::string menuBefore;
    std::string menuAfter;
};
inline const Command kCommands[] = {
    {"Start", &TrayMenu::mnuStartKiller_Click, &EngineControl::bStartPending, 2, kStopped, kRunning},
    {"Stop", &TrayMenu::mnuStopKiller_Click, &EngineControl::bStopPending, 1, kRunning, kStopped},
    {"Pause", &TrayMenu::mnuPauseKiller_Click, &EngineControl::bPausePending, 1, kRunning, kRunning}};

struct EngineFixture {
    std::string Enabled() const { return EnabledItems(menu.Handle()); }

    void Connect() { engine.Connect(window.Hwnd(), 0x1234); }
    void Disconnect() { engine.Disconnect(window.Hwnd(), 0x1234); }

    // Without what connecting calls.
    void ConnectQuietly() {
        Connect();
        server.script.calls.clear();
    }

    void Choose(const Command& command) { (menu.*command.item)(); }

    // The result of the next calls of the member.
    void Refuse(const std::string& member, HRESULT refusal, int times) {
        server.script.results[member] = refusal;
        server.script.within[member] = [this, member, times]() mutable {
            if (times-- == 0) server.script.results.erase(member);
        };
    }

    bool AnyPending() const { return engine.bStartPending || engine.bStopPending || engine.bPausePending; }

    PlainWindow window;
    FakeEngine server;
    TrayMenu menu;
    Calls notices;
    std::function<void()> animate;
    EngineControl engine{menu,
                         [this] {
                             notices.push_back("animate");
                             if (animate) animate();
                         },
                         [this] { notices.push_back("announce"); }};
};

inline constexpr UINT kMenuInterval = 500;  // milliseconds

// One whose timers tick when the test says so.
struct TickingEngine : EngineFixture {
    // The tick of the commands' timer, which is off after it.
    void Tick() {
        CHECK(clock.Tick(kMenuInterval) == 1);
        CHECK_FALSE(engine.tmMenu().Running());
    }

    Clock clock;
};
