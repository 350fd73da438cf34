#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"

TEST_CASE_FIXTURE(EngineFixture,
                  "the engine is created with the window's handle, the reference's address and mode 2") {
    Connect();
    CHECK(IsEqualCLSID(server.classId, __uuidof(SentrelApp)));
    CHECK(server.context == CLSCTX_LOCAL_SERVER);
    CHECK(server.script.configHwnd == window.Number());
    CHECK(server.script.configForm == 0x1234);
    CHECK(server.script.mode == 2);
    CHECK(server.script.calls == Calls{"CreateInstance", "CreatePopup", "Advise", "State"});
    CHECK(server.ConnectionCount() == 1);
    CHECK(engine.Popup().Get() == reinterpret_cast<IDispatch*>(server.popup));
}

TEST_CASE_FIXTURE(EngineFixture, "state 1 gives the menu of a running engine") {
    server.script.state = 1;
    Connect();
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture, "states 2 and 3 give the same menu of a stopped engine") {
    for (const LONG state : {2L, 3L}) {
        CAPTURE(state);
        menu.EnableRunningMenu();
        server.script.state = state;
        Connect();
        CHECK(Enabled() == kStoppedMenu);
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture, "any other state leaves the menu as designed") {
    for (const LONG state : {0L, 4L, -1L, 0x7fffffffL}) {
        CAPTURE(state);
        server.script.state = state;
        Connect();
        CHECK(Enabled() == kDesigned);
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "a state that cannot be read leaves the menu as designed and the engine held") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["State"] = failure;
        Connect();
        CHECK(Enabled() == kDesigned);
        CHECK(engine.Popup() != nullptr);
        CHECK(server.ConnectionCount() == 1);
        engine.Disconnect(window.Hwnd(), 0x1234);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "without an engine server there is no engine and the menu stays as designed") {
    for (const HRESULT failure :
         {REGDB_E_CLASSNOTREG, CO_E_SERVER_EXEC_FAILURE, E_NOINTERFACE, E_OUTOFMEMORY}) {
        CAPTURE(failure);
        server.script.results["CreateInstance"] = failure;
        server.script.calls.clear();
        Connect();
        CHECK(engine.Popup() == nullptr);
        CHECK(Enabled() == kDesigned);
        CHECK(server.script.calls == Calls{"CreateInstance"});
        // Nobody starts it to leave it either.
        engine.Disconnect(window.Hwnd(), 0x1234);
        CHECK(server.script.calls == Calls{"CreateInstance"});
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "an engine that is not created is absent, but its application is taken leave of") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["CreatePopup"] = failure;
        server.script.calls.clear();
        Connect();
        CHECK(engine.Popup() == nullptr);
        CHECK(Enabled() == kDesigned);
        engine.Disconnect(window.Hwnd(), 0x1234);
        CHECK(server.script.calls ==
              Calls{"CreateInstance", "CreatePopup", "ReleasePopup", "SentrelApp gone"});
    }
}

TEST_CASE_FIXTURE(EngineFixture, "an application that creates nothing leaves the engine absent") {
    server.script.createsNothing = true;
    Connect();
    CHECK(engine.Popup() == nullptr);
    CHECK(Enabled() == kDesigned);
}

TEST_CASE_FIXTURE(EngineFixture, "an engine without events is still held and its state read") {
    server.script.results["Advise"] = E_NOINTERFACE;
    server.script.state = 2;
    Connect();
    CHECK(engine.Popup() != nullptr);
    CHECK(Enabled() == kStoppedMenu);
    CHECK(server.script.calls == Calls{"CreateInstance", "CreatePopup", "Advise", "State"});
}

TEST_CASE_FIXTURE(EngineFixture,
                  "letting go of the engine gives up its events too, takes no leave yet and never stops it") {
    ConnectQuietly();
    engine.Release();
    CHECK(engine.Popup() == nullptr);
    CHECK(server.script.calls == Calls{"Popup gone"});
    CHECK(server.popup == nullptr);

    engine.Disconnect(window.Hwnd(), 0x1234);
    CHECK(server.script.calls == Calls{"Popup gone", "ReleasePopup", "SentrelApp gone"});
    CHECK(server.script.configHwnd == window.Number());
    CHECK(server.script.configForm == 0x1234);
}

TEST_CASE_FIXTURE(EngineFixture, "disconnecting lets go of the engine before it takes leave, once") {
    ConnectQuietly();
    engine.Disconnect(window.Hwnd(), 0x5678);
    engine.Disconnect(window.Hwnd(), 0x5678);
    engine.Release();
    CHECK(server.script.calls == Calls{"Popup gone", "ReleasePopup", "SentrelApp gone"});
    CHECK(server.script.configForm == 0x5678);
}

TEST_CASE_FIXTURE(EngineFixture, "an engine that fails when it is left is gone all the same") {
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["ReleasePopup"] = failure;
        ConnectQuietly();
        engine.Disconnect(window.Hwnd(), 0x1234);
        CHECK(engine.Popup() == nullptr);
        CHECK(server.script.calls == Calls{"Popup gone", "ReleasePopup", "SentrelApp gone"});
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "no event arrives after the engine was let go of, though somebody else still holds it") {
    ConnectQuietly();
    const ComPtr<IDispatch> client = engine.Popup();
    engine.Release();
    CHECK(server.ConnectionCount() == 0);
    server.Raise(kKilled, {Variant(1L), Variant(L"Win a prize")});
    server.Raise(kStopped);
    CHECK(notices.empty());
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture, "a closed window animates the icon first and gives the notice second") {
    Connect();
    server.Raise(kKilled, {Variant(0x20304L), Variant(L"Win a prize")});
    CHECK(notices == Calls{"animate", "announce"});
    CHECK(Enabled() == kRunning);
}

TEST_CASE_FIXTURE(EngineFixture, "the notice is given even when the animation fails") {
    Connect();
    animate = [] { RaiseError(ErrorNumber::ObjectNotSet); };
    server.Raise(kKilled, {Variant(1L), Variant(L"")});
    CHECK(notices == Calls{"animate", "announce"});
}

TEST_CASE_FIXTURE(EngineFixture, "two closed windows give two notices") {
    Connect();
    server.Raise(kKilled, {Variant(1L), Variant(L"first")});
    server.Raise(kKilled, {Variant(2L), Variant(L"second")});
    CHECK(notices == Calls{"animate", "announce", "animate", "announce"});
}

TEST_CASE_FIXTURE(EngineFixture, "a closed window without its two arguments gives no notice") {
    Connect();
    server.Raise(kKilled, {Variant(1L)});
    server.Raise(kKilled, {});
    CHECK(notices.empty());
}

TEST_CASE_FIXTURE(EngineFixture, "the engine's events set the menu") {
    Connect();
    server.Raise(kStopped);
    CHECK(Enabled() == kStoppedMenu);
    server.Raise(kStarted);
    CHECK(Enabled() == kRunning);
    server.Raise(kPaused);
    CHECK(Enabled() == kStoppedMenu);
    server.Raise(kStarted);
    CHECK(Enabled() == kRunning);
    CHECK(notices.empty());
    CHECK(server.script.Count("State") == 1);
}

TEST_CASE_FIXTURE(EngineFixture, "an unknown event changes nothing") {
    Connect();
    server.Raise(5);
    CHECK(Enabled() == kRunning);
    CHECK(notices.empty());
}

TEST_CASE_FIXTURE(EngineFixture, "opening and leaving are never disabled") {
    for (const bool running : {true, false}) {
        running ? menu.EnableRunningMenu() : menu.EnableStoppedMenu();
        CHECK(IsEnabled(mnuShowConfig));
        CHECK(IsEnabled(mnuExit));
    }
}

TEST_CASE_FIXTURE(EngineFixture, "the settings are reloaded by the engine") {
    ConnectQuietly();
    int done = 0;
    engine.ReloadSettings([&] {
        CHECK(server.script.calls == Calls{"ReloadSettings"});
        ++done;
    });
    CHECK(done == 1);
}

TEST_CASE_FIXTURE(EngineFixture, "the engine tells its log") {
    ConnectQuietly();
    CHECK(engine.LogFile() == L"C:\\Sentrel\\closed.log");
    server.script.logFile.clear();
    CHECK(engine.LogFile().empty());
}

TEST_CASE_FIXTURE(EngineFixture, "what a missing engine is asked fails with number 91") {
    int done = 0;
    engine.ReloadSettings([&] { ++done; });
    CHECK(done == 1);
    CHECK(ErrorOf([&] { engine.LogFile(); }) == HresultOf(ErrorNumber::ObjectNotSet));
    CHECK(engine.Popup() == nullptr);
}

TEST_CASE_FIXTURE(
    EngineFixture,
    "a failing engine's error is passed on where it is asked for its log, and ignored elsewhere") {
    Connect();
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["LogFile"] = failure;
        CHECK(ErrorOf([&] { engine.LogFile(); }) == failure);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "an engine that is let go of while it is called lives until the call returns") {
    for (const std::string call : {"ReloadSettings", "LogFile", "State", "Start", "Stop", "Pause"}) {
        CAPTURE(call);
        server.script.within.clear();
        bool wasAlive = false;
        const auto letGo = [&] {
            engine.Disconnect(window.Hwnd(), 0x1234);
            wasAlive = server.popup != nullptr;
        };
        if (call == "State") server.script.within[call] = letGo;
        Connect();
        server.script.within[call] = letGo;
        if (call == "ReloadSettings") engine.ReloadSettings([] {});
        if (call == "LogFile") engine.LogFile();
        if (call == "Start") engine.mnuStartKiller_Click();
        if (call == "Stop") engine.mnuStopKiller_Click();
        if (call == "Pause") engine.mnuPauseKiller_Click();
        engine.tmMenu_Timer();
        CHECK(wasAlive);
        CHECK(server.popup == nullptr);
        CHECK(engine.Popup() == nullptr);
    }
}
