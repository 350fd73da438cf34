// The commands of the tray menu.
#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"
#include "tests/tray_icon/timer_calls.h"

TEST_CASE(
    "a menu command only notes itself, and the engine gets it once, when the menu has closed; it is done "
    "with whatever the engine returns, or where there is none") {
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        const auto check = [&](const std::string& member, HRESULT result, const Calls& calls,
                               const std::string& menuBefore, const std::string& menuAfter) {
            CAPTURE(result);
            TimerCalls timers;
            EngineFixture at;
            at.server.script.results[member] = result;
            at.server.script.state = command.stateBefore;
            at.ConnectQuietly();
            CHECK_FALSE(at.engine.tmMenu().Running());
            at.Choose(command);
            CHECK(at.engine.*command.pending);
            CHECK(at.server.script.calls.empty());
            CHECK(at.Enabled() == menuBefore);
            CHECK(timers.periods == std::vector<UINT>{500});
            REQUIRE(at.Tick());
            PumpFor(50);
            CHECK(at.server.script.calls == calls);
            CHECK_FALSE(at.AnyPending());
            CHECK(at.Enabled() == menuAfter);
        };
        check(command.member, S_OK, {command.member}, command.menuBefore, command.menuAfter);
        for (const HRESULT failure : kFailures)
            check(command.member, failure, {command.member}, command.menuBefore, command.menuAfter);
        check("CreateInstance", REGDB_E_CLASSNOTREG, {}, kDesigned,
              command.member == "Pause" ? kDesigned : command.menuAfter);
    }
}

TEST_CASE_FIXTURE(
    EngineFixture,
    "a second command does not put off the tick that the first one waits for, and is left over") {
    TimerCalls timers;
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    engine.mnuStopKiller_Click();
    // Set again, the timer would begin again.
    CHECK(timers.periods == std::vector<UINT>{500});
    REQUIRE(Tick());
    PumpFor(50);
    CHECK(server.script.calls == Calls{"Start"});
    CHECK(engine.bStopPending);
    CHECK(Enabled() == kRunning);

    // The next command's tick serves the stop that was left over, before the pause.
    engine.mnuPauseKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start", "Stop"});
    CHECK(engine.bPausePending);
    CHECK(Enabled() == kStopped);
}

TEST_CASE_FIXTURE(EngineFixture, "one command a tick: start before stop before pause, however often chosen") {
    ConnectQuietly();
    engine.mnuPauseKiller_Click();
    engine.mnuStopKiller_Click();
    engine.mnuStopKiller_Click();
    engine.mnuStartKiller_Click();
    Calls served;
    for (const Command& command : kCommands) {
        served.push_back(command.member);
        engine.tmMenu_Timer();
        CHECK(server.script.calls == served);
        CHECK_FALSE(engine.tmMenu().Running());
    }
    CHECK_FALSE(AnyPending());
}

TEST_CASE_FIXTURE(EngineFixture, "a tick without a command turns the timer off and calls nothing") {
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    engine.bStartPending = false;
    REQUIRE(Tick());
    CHECK(server.script.calls.empty());
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "what comes in while a command is carried out: its own tick gives it no second "
                  "time, its menu overtakes an event's, another command waits for a later one") {
    TimerCalls timers;
    server.script.state = 2;
    ConnectQuietly();
    server.script.within["Start"] = [this] {
        PumpFor(100);
        server.Raise(kStoppedEvent);
        engine.mnuStopKiller_Click();
    };
    engine.mnuStartKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start"});
    CHECK(Enabled() == kRunning);
    CHECK_FALSE(engine.bStartPending);
    CHECK(engine.bStopPending);
}

TEST_CASE_FIXTURE(EngineFixture, "a command chosen again while it is carried out is done with it") {
    ConnectQuietly();
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        server.script.within[command.member] = [&] { Choose(command); };
        Choose(command);
        engine.tmMenu_Timer();
        CHECK_FALSE(AnyPending());
    }
}

TEST_CASE_FIXTURE(EngineFixture, "letting go of the engine turns the timer off") {
    TimerCalls timers;
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    engine.Release();
    CHECK_FALSE(engine.tmMenu().Running());
    PumpFor(50);
    CHECK(server.script.Count("Start") == 0);
}
