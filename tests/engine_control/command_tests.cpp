#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"
#include "tests/tray_icon/timer_calls.h"

TEST_CASE_FIXTURE(EngineFixture, "a menu command only notes itself and starts the timer") {
    ConnectQuietly();
    CHECK_FALSE(engine.tmMenu().Running());
    engine.mnuStartKiller_Click();
    CHECK(engine.bStartPending);
    CHECK(engine.tmMenu().Running());
    engine.mnuStopKiller_Click();
    CHECK(engine.bStopPending);
    engine.mnuPauseKiller_Click();
    CHECK(engine.bPausePending);
    CHECK(server.script.calls.empty());
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture, "the menu's items are the commands") {
    ConnectQuietly();
    menu.mnuStartKiller_Click();
    CHECK(engine.bStartPending);
    menu.mnuStopKiller_Click();
    CHECK(engine.bStopPending);
    menu.mnuPauseKiller_Click();
    CHECK(engine.bPausePending);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "starting is carried out half a second later, and the menu is the running engine's") {
    server.script.state = 2;
    ConnectQuietly();
    const DWORD start = GetTickCount();
    engine.mnuStartKiller_Click();
    CHECK(server.script.calls.empty());
    REQUIRE(Tick());
    CHECK(GetTickCount() - start >= 480);
    CHECK(server.script.calls == Calls{"Start"});
    CHECK_FALSE(engine.bStartPending);
    CHECK(Enabled() == kRunning);
    PumpFor(700);
    CHECK(server.script.calls == Calls{"Start"});
}

TEST_CASE_FIXTURE(EngineFixture,
                  "stopping is carried out half a second later, and the menu is the stopped engine's") {
    ConnectQuietly();
    engine.mnuStopKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Stop"});
    CHECK_FALSE(engine.bStopPending);
    CHECK(Enabled() == kStoppedMenu);
}

TEST_CASE_FIXTURE(EngineFixture, "pausing leaves the menu until the engine raises its event") {
    ConnectQuietly();
    engine.mnuPauseKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Pause"});
    CHECK_FALSE(engine.bPausePending);
    CHECK(Enabled() == kRunning);
    server.Raise(kPaused);
    CHECK(Enabled() == kStoppedMenu);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "an event within the command's call is overtaken by the command's own menu") {
    server.script.state = 2;
    ConnectQuietly();
    server.script.within["Start"] = [this] { server.Raise(kStopped); };
    engine.mnuStartKiller_Click();
    engine.tmMenu_Timer();
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture, "start and stop within half a second: the tick serves the start alone") {
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    engine.mnuStopKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start"});
    CHECK(engine.bStopPending);
    CHECK(Enabled() == kRunning);
    PumpFor(700);
    CHECK(server.script.calls == Calls{"Start"});

    // The next command's tick serves the stop that was left over, before the pause.
    engine.mnuPauseKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start", "Stop"});
    CHECK(engine.bPausePending);
    CHECK(Enabled() == kStoppedMenu);
}

TEST_CASE_FIXTURE(EngineFixture, "a second command does not put off the tick that the first one waits for") {
    ConnectQuietly();
    const TimerCalls timers;
    engine.mnuStartKiller_Click();
    engine.mnuStopKiller_Click();
    // Set again, the timer would begin again.
    CHECK(timers.periods == std::vector<UINT>{500});
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Start"});
}

TEST_CASE_FIXTURE(EngineFixture, "one command a tick: start before stop before pause") {
    ConnectQuietly();
    engine.mnuPauseKiller_Click();
    engine.mnuStopKiller_Click();
    engine.mnuStartKiller_Click();
    const Calls order{"Start", "Stop", "Pause"};
    for (size_t served = 1; served <= order.size(); ++served) {
        engine.tmMenu_Timer();
        CHECK(server.script.calls ==
              Calls(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(served)));
        CHECK_FALSE(engine.tmMenu().Running());
    }
    CHECK_FALSE(engine.bStartPending);
    CHECK_FALSE(engine.bStopPending);
    CHECK_FALSE(engine.bPausePending);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "a second command of the same kind before the tick is served with the first") {
    ConnectQuietly();
    engine.mnuStopKiller_Click();
    engine.mnuStopKiller_Click();
    REQUIRE(Tick());
    CHECK(server.script.calls == Calls{"Stop"});
    PumpFor(700);
    CHECK(server.script.calls == Calls{"Stop"});
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
                  "a failing start is skipped: flag cleared, menu set, timer off, never tried again") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["Start"] = failure;
        server.script.state = 2;
        ConnectQuietly();
        engine.mnuStartKiller_Click();
        engine.tmMenu_Timer();
        CHECK(server.script.calls == Calls{"Start"});
        CHECK_FALSE(engine.bStartPending);
        CHECK(Enabled() == kRunning);
        CHECK_FALSE(engine.tmMenu().Running());
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "a failing stop is skipped: flag cleared, menu set, timer off, never tried again") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["Stop"] = failure;
        ConnectQuietly();
        engine.mnuStopKiller_Click();
        engine.tmMenu_Timer();
        CHECK(server.script.calls == Calls{"Stop"});
        CHECK_FALSE(engine.bStopPending);
        CHECK(Enabled() == kStoppedMenu);
        CHECK_FALSE(engine.tmMenu().Running());
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture, "a failing pause is skipped: flag cleared, menu as it was, timer off") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["Pause"] = failure;
        ConnectQuietly();
        engine.mnuPauseKiller_Click();
        engine.tmMenu_Timer();
        CHECK(server.script.calls == Calls{"Pause"});
        CHECK_FALSE(engine.bPausePending);
        CHECK(Enabled() == kRunning);
        CHECK_FALSE(engine.tmMenu().Running());
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture, "commands for a missing engine end like failing ones") {
    server.script.results["CreateInstance"] = REGDB_E_CLASSNOTREG;
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    REQUIRE(Tick());
    CHECK_FALSE(engine.bStartPending);
    CHECK(Enabled() == kRunning);
    engine.mnuPauseKiller_Click();
    engine.tmMenu_Timer();
    CHECK_FALSE(engine.bPausePending);
    CHECK(Enabled() == kRunning);
    engine.mnuStopKiller_Click();
    engine.tmMenu_Timer();
    CHECK_FALSE(engine.bStopPending);
    CHECK(Enabled() == kStoppedMenu);
    CHECK(server.script.calls.empty());
}

TEST_CASE_FIXTURE(EngineFixture, "an engine slower than the timer's period gets the command once") {
    ConnectQuietly();
    server.script.within["Start"] = [] { PumpFor(1200); };
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
    server.script.within["Start"] = [this] { engine.mnuStartKiller_Click(); };
    server.script.within["Stop"] = [this] { engine.mnuStopKiller_Click(); };
    server.script.within["Pause"] = [this] { engine.mnuPauseKiller_Click(); };
    engine.mnuStartKiller_Click();
    engine.tmMenu_Timer();
    CHECK_FALSE(engine.bStartPending);
    engine.mnuStopKiller_Click();
    engine.tmMenu_Timer();
    CHECK_FALSE(engine.bStopPending);
    engine.mnuPauseKiller_Click();
    engine.tmMenu_Timer();
    CHECK_FALSE(engine.bPausePending);
}

TEST_CASE_FIXTURE(EngineFixture, "letting go of the engine turns the timer off") {
    ConnectQuietly();
    engine.mnuStartKiller_Click();
    engine.Release();
    CHECK_FALSE(engine.tmMenu().Running());
    PumpFor(600);
    CHECK(server.script.Count("Start") == 0);
}
