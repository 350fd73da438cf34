#include <doctest.h>

#include <utility>

#include "tests/engine_control/engine_fixture.h"
#include "tests/support/error_of.h"

TEST_CASE_FIXTURE(EngineFixture,
                  "the engine is created with the window's handle, the reference's address and mode 2, and "
                  "the menu is the state's: 1 is running, 2 and 3 are stopped, others are nothing") {
    const std::pair<LONG, std::string> rows[] = {{0, kDesigned}, {1, kRunning},  {2, kStopped},
                                                 {3, kStopped},  {4, kDesigned}, {-1, kDesigned}};
    for (const auto& [state, enabled] : rows) {
        CAPTURE(state);
        menu.EnableDesignedMenu();
        server.script.calls.clear();
        server.script.state = state;
        Connect();
        CHECK(server.script.calls == Calls{"CreateInstance", "CreatePopup", "Advise", "State"});
        CHECK(server.ConnectionCount() == 1);
        CHECK(engine.Popup().Get() == reinterpret_cast<IDispatch*>(server.popup));
        CHECK(Enabled() == enabled);
        CHECK(IsEqualCLSID(server.classId, __uuidof(SentrelApp)));
        CHECK(server.context == CLSCTX_LOCAL_SERVER);
        CHECK(server.script.configHwnd == window.Number());
        CHECK(server.script.configForm == 0x1234);
        CHECK(server.script.mode == 2);
        Disconnect();
    }
}

TEST_CASE("what fails in connecting leaves the menu as designed, and leave is taken of what was reached") {
    const Calls toApplication{"CreateInstance"};
    const Calls toPopup{"CreateInstance", "CreatePopup", "ReleasePopup", "SentrelApp gone"};
    const Calls toState{"CreateInstance", "CreatePopup",  "Advise",         "State",
                        "Popup gone",     "ReleasePopup", "SentrelApp gone"};
    struct Row {
        std::string member;
        HRESULT failure;
        Calls calls;
        bool hasEngine;
        std::string enabled = kDesigned;
    };
    std::vector<Row> rows{
        // Nobody starts it to leave it either.
        {"CreateInstance", REGDB_E_CLASSNOTREG, toApplication, false},
        // It creates nothing.
        {"CreatePopup", S_FALSE, toPopup, false},
        // An engine without events is still held, and its state read.
        {"Advise", E_NOINTERFACE, toState, true, kRunning},
    };
    for (const HRESULT failure : kFailures) {
        rows.push_back({"CreatePopup", failure, toPopup, false});
        rows.push_back({"State", failure, toState, true});
    }
    for (const Row& row : rows) {
        CAPTURE(row.member);
        CAPTURE(row.failure);
        EngineFixture at;
        at.server.script.results[row.member] = row.failure;
        at.Connect();
        CHECK((at.engine.Popup() != nullptr) == row.hasEngine);
        if (row.hasEngine) CHECK(at.server.ConnectionCount() == (row.member == "Advise" ? 0U : 1U));
        CHECK(at.Enabled() == row.enabled);
        at.Disconnect();
        CHECK(at.server.script.calls == row.calls);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "disconnecting lets go of the engine before it takes leave, once, failing or not") {
    const Calls left{"Popup gone", "ReleasePopup", "SentrelApp gone"};
    ConnectQuietly();
    engine.Disconnect(window.Hwnd(), 0x5678);
    engine.Disconnect(window.Hwnd(), 0x5678);
    engine.Release();
    CHECK(server.script.calls == left);
    CHECK(server.script.configHwnd == window.Number());
    CHECK(server.script.configForm == 0x5678);
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["ReleasePopup"] = failure;
        ConnectQuietly();
        Disconnect();
        CHECK(engine.Popup() == nullptr);
        CHECK(server.script.calls == left);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "letting go of the engine gives up its events, though somebody else still holds it and it "
                  "still raises them, and takes no leave yet") {
    ConnectQuietly();
    const auto raise = [this] {
        server.Raise(kKilled, {1L, L"Win a prize"});
        server.Raise(kStoppedEvent);
    };
    ComPtr<IDispatch> client = engine.Popup();
    server.script.within["Unadvise"] = raise;
    engine.Release();
    CHECK(engine.Popup() == nullptr);
    CHECK(server.ConnectionCount() == 0);
    raise();
    CHECK(notices.empty());
    CHECK(Enabled() == kRunning);
    client.Reset();
    CHECK(server.script.calls == Calls{"Popup gone"});
}

TEST_CASE_FIXTURE(EngineFixture,
                  "the engine's events set the menu; each closed window animates the icon, failing or not, "
                  "and then gives the notice; what is no event of an engine does nothing") {
    struct Row {
        std::string what;
        DISPID event;
        std::vector<Variant> arguments;
        std::string enabled;
        Calls notices;
    };
    const Calls notice{"animate", "announce"};
    const Row rows[] = {
        {"stopped", kStoppedEvent, {}, kStopped, {}},
        {"a number that no event has", 5, {}, kStopped, {}},
        {"started", kStartedEvent, {}, kRunning, {}},
        {"a closed window", kKilled, {0x20304L, L"Win a prize"}, kRunning, notice},
        {"a closed window that lacks its caption", kKilled, {1L}, kRunning, {}},
        {"a closed window that lacks everything", kKilled, {}, kRunning, {}},
        {"paused", kPausedEvent, {}, kStopped, {}},
        {"a closed window without a caption", kKilled, {2L, L""}, kStopped, notice},
    };
    Connect();
    for (const bool fails : {false, true}) {
        if (fails) animate = [] { RaiseError(ErrorNumber::ObjectNotSet); };
        for (const Row& row : rows) {
            CAPTURE(row.what);
            notices.clear();
            server.Raise(row.event, row.arguments);
            CHECK(Enabled() == row.enabled);
            CHECK(notices == row.notices);
        }
    }
    CHECK(server.script.Count("State") == 1);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "the engine tells its log; the error of one that fails, or is missing, is passed on, and a "
                  "reload is done without it") {
    Connect();
    CHECK(engine.LogFile() == L"C:\\Sentrel\\closed.log");
    server.script.logFile.clear();
    CHECK(engine.LogFile().empty());
    for (const HRESULT failure : kFailures) {
        CAPTURE(failure);
        server.script.results["LogFile"] = failure;
        CHECK(ErrorOf([&] { engine.LogFile(); }) == failure);
    }
    engine.Release();
    CHECK(ErrorOf([&] { engine.LogFile(); }) == HresultOf(ErrorNumber::ObjectNotSet));
    int done = 0;
    engine.ReloadSettings([&] { ++done; });
    CHECK(done == 1);
}

TEST_CASE("an engine that is let go of while it is called lives until the call returns") {
    for (const std::string call : {"State", "ReloadSettings", "LogFile", "Start", "Stop", "Pause"}) {
        CAPTURE(call);
        EngineFixture at;
        bool wasAlive = false;
        at.server.script.within[call] = [&] {
            at.Disconnect();
            wasAlive = at.server.popup != nullptr;
        };
        at.Connect();
        at.engine.ReloadSettings([] {});
        ErrorOf([&] { at.engine.LogFile(); });
        for (const Command& command : kCommands) {
            at.Choose(command);
            at.engine.tmMenu_Timer();
        }
        CHECK(wasAlive);
        CHECK(at.server.popup == nullptr);
        CHECK(at.engine.Popup() == nullptr);
    }
}
