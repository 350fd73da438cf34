// The commands of the tray menu.
#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"
#include "tests/tray_icon/timer_calls.h"

TEST_CASE("a menu command only notes itself, and the engine gets it once, when the menu has closed") {
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        TimerCalls timers;
        EngineFixture at;
        at.server.script.state = command.stateBefore;
        at.ConnectQuietly();
        CHECK_FALSE(at.engine.tmMenu().Running());
        at.Choose(command);
        CHECK(at.engine.*command.pending);
        CHECK(at.server.script.calls.empty());
        CHECK(at.Enabled() == command.menuBefore);
        CHECK(timers.periods == std::vector<UINT>{500});
        REQUIRE(at.Tick());
        CHECK(at.server.script.calls == Calls{command.member});
        CHECK_FALSE(at.AnyPending());
        CHECK(at.Enabled() == command.menuAfter);
        PumpFor(50);
        CHECK(at.server.script.calls == Calls{command.member});
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "an event within the command's call is overtaken by the command's own menu") {
    server.script.state = 2;
    ConnectQuietly();
    server.script.within["Start"] = [this] { server.Raise(4); };
    engine.mnuStartKiller_Click();
    engine.tmMenu_Timer();
    CHECK(Enabled() == kRunning);
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

TEST_CASE("a command that fails, or that has no engine, is done with as if it had succeeded") {
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        for (const HRESULT failure : kFailures) {
            CAPTURE(failure);
            EngineFixture at;
            at.server.script.results[command.member] = failure;
            at.server.script.state = command.stateBefore;
            at.ConnectQuietly();
            at.Choose(command);
            at.engine.tmMenu_Timer();
            CHECK(at.server.script.calls == Calls{command.member});
            CHECK_FALSE(at.AnyPending());
            CHECK(at.Enabled() == command.menuAfter);
            CHECK_FALSE(at.engine.tmMenu().Running());
        }
        EngineFixture none;
        none.server.script.results["CreateInstance"] = REGDB_E_CLASSNOTREG;
        none.ConnectQuietly();
        none.Choose(command);
        none.engine.tmMenu_Timer();
        CHECK_FALSE(none.AnyPending());
        CHECK(none.Enabled() == (command.member == "Pause" ? kDesigned : command.menuAfter));
        CHECK(none.server.script.calls.empty());
    }
}

TEST_CASE_FIXTURE(EngineFixture, "an engine slower than the timer's period gets the command once") {
    TimerCalls timers;
    ConnectQuietly();
    server.script.within["Start"] = [] { PumpFor(100); };
    engine.mnuStartKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start"});
    CHECK_FALSE(engine.bStartPending);
}

TEST_CASE_FIXTURE(EngineFixture, "a command chosen while another is carried out waits for a later command") {
    ConnectQuietly();
    server.script.within["Start"] = [this] { engine.mnuStopKiller_Click(); };
    engine.mnuStartKiller_Click();
    engine.tmMenu_Timer();
    CHECK(engine.bStopPending);
    CHECK_FALSE(engine.tmMenu().Running());
    CHECK(server.script.calls == Calls{"Start"});
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
