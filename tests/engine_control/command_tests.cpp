// The commands of the tray menu.
#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"
#include "tests/support/import_fake.h"

TEST_CASE(
    "a menu command only notes itself, and the engine gets it once, when the menu has closed; it is done "
    "with whatever the engine returns, or where there is none, and though it is chosen again meanwhile") {
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        const auto check = [&](const std::string& member, HRESULT result, const Calls& calls,
                               const std::string& menuBefore, const std::string& menuAfter) {
            CAPTURE(result);
            TickingEngine at;
            at.server.script.results[member] = result;
            at.server.script.state = command.stateBefore;
            at.ConnectQuietly();
            CHECK_FALSE(at.engine.tmMenu().Running());
            at.Choose(command);
            CHECK(at.engine.*command.pending);
            CHECK(at.server.script.calls.empty());
            CHECK(at.Enabled() == menuBefore);
            at.Tick();
            CHECK(at.server.script.calls == calls);
            CHECK_FALSE(at.AnyPending());
            CHECK(at.Enabled() == menuAfter);
            at.server.script.within[command.member] = [&] { at.Choose(command); };
            at.Choose(command);
            at.Tick();
            CHECK_FALSE(at.AnyPending());
        };
        check(command.member, S_OK, {command.member}, command.menuBefore, command.menuAfter);
        for (const HRESULT failure : kFailures)
            check(command.member, failure, {command.member}, command.menuBefore, command.menuAfter);
        check("CreateInstance", REGDB_E_CLASSNOTREG, {}, kDesigned,
              command.member == "Pause" ? kDesigned : command.menuAfter);
    }
}

TEST_CASE_FIXTURE(TickingEngine,
                  "one command a tick: start before stop before pause, however often chosen; what is left "
                  "waits for the next command's tick, and letting go of the engine ends the wait") {
    int starts = 0;
    const ImportFake<"SetTimer", decltype(&SetTimer)> timer{
        "user32.dll", [&](HWND owner, UINT_PTR id, UINT period, TIMERPROC procedure) {
            ++starts;
            return timer.Original(owner, id, period, procedure);
        }};
    ConnectQuietly();
    engine.mnuStopKiller_Click();
    engine.mnuStartKiller_Click();
    engine.mnuStopKiller_Click();
    // Set again, the timer would begin again.
    CHECK(starts == 1);
    Tick();
    CHECK(server.script.calls == Calls{"Start"});
    CHECK(engine.bStopPending);
    CHECK(Enabled() == kRunning);

    engine.mnuPauseKiller_Click();
    Tick();
    CHECK(server.script.calls == Calls{"Start", "Stop"});
    CHECK(engine.bPausePending);
    CHECK(Enabled() == kStopped);

    // A tick may find nothing to do.
    engine.mnuStartKiller_Click();
    engine.bStartPending = engine.bPausePending = false;
    Tick();
    CHECK(server.script.calls == Calls{"Start", "Stop"});
    CHECK(Enabled() == kStopped);

    engine.mnuStartKiller_Click();
    engine.Release();
    CHECK_FALSE(engine.tmMenu().Running());
    CHECK_FALSE(clock.AnyRuns());
}

TEST_CASE_FIXTURE(TickingEngine,
                  "what comes in while a command is carried out: its own tick gives it no second "
                  "time, its menu overtakes an event's, another command waits for a later one") {
    server.script.state = 2;
    ConnectQuietly();
    server.script.within["Start"] = [this] {
        CHECK(clock.Tick(kMenuInterval) == 1);
        server.Raise(kStoppedEvent);
        engine.mnuStopKiller_Click();
    };
    engine.mnuStartKiller_Click();
    Tick();
    CHECK(server.script.calls == Calls{"Start"});
    CHECK(Enabled() == kRunning);
    CHECK_FALSE(engine.bStartPending);
    CHECK(engine.bStopPending);
}
