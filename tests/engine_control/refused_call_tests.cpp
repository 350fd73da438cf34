// Calls of the engine that are refused for now: it is busy, or Windows lets no call out while this thread
// handles a message that another program has sent.
#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"

namespace {

const HRESULT kRefusals[] = {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER,
                             RPC_E_CANTCALLOUT_ININPUTSYNCCALL};

DWORD waited = 0;  // milliseconds

HRESULT WINAPI NoteWait(DWORD, DWORD milliseconds, ULONG, HANDLE*, DWORD*) {
    waited += milliseconds;
    return RPC_S_CALLPENDING;
}

struct RefusingEngine : EngineFixture {
    // Refuses the next calls of the member.
    void Refuse(const std::string& member, HRESULT refusal, int times) {
        server.script.results[member] = refusal;
        server.script.within[member] = [this, member, times]() mutable {
            if (times-- == 0) server.script.results.erase(member);
        };
    }

    void Reload() {
        engine.ReloadSettings([this] { ++done; });
    }

    int done = 0;
};

}  // namespace

TEST_CASE_FIXTURE(RefusingEngine,
                  "a reload that is refused for now is made again until the engine takes it") {
    for (const HRESULT refusal : kRefusals) {
        CAPTURE(refusal);
        done = 0;
        ConnectQuietly();
        Refuse("ReloadSettings", refusal, 3);
        Reload();
        CHECK(done == 0);
        CHECK(server.script.calls == Calls{"ReloadSettings"});
        REQUIRE(PumpUntil([&] { return done == 1; }));
        CHECK(server.script.calls == Calls(4, "ReloadSettings"));
        PumpFor(300);
        CHECK(done == 1);
        CHECK(server.script.calls == Calls(4, "ReloadSettings"));
    }
}

TEST_CASE_FIXTURE(RefusingEngine, "any other failure of a reload is final") {
    Connect();
    for (const HRESULT failure : {E_FAIL, RPC_E_DISCONNECTED, HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)}) {
        CAPTURE(failure);
        done = 0;
        server.script.calls.clear();
        server.script.results["ReloadSettings"] = failure;
        Reload();
        CHECK(done == 1);
        PumpFor(300);
        CHECK(server.script.calls == Calls{"ReloadSettings"});
    }
}

TEST_CASE_FIXTURE(RefusingEngine, "a menu command that is refused for now reaches the engine later, once") {
    for (const Command& command : kCommands) {
        CAPTURE(command.member);
        server.script.state = command.stateBefore;
        ConnectQuietly();
        Refuse(command.member, RPC_E_CALL_REJECTED, 2);
        Choose(command);
        REQUIRE(Tick());
        CHECK(server.script.calls == Calls{command.member});
        CHECK(Enabled() == command.menuBefore);
        REQUIRE(PumpUntil([&] { return server.script.calls.size() == 3; }));
        CHECK(Enabled() == command.menuAfter);
        CHECK_FALSE(AnyPending());
        PumpFor(300);
        CHECK(server.script.calls == Calls(3, command.member));
    }
}

TEST_CASE_FIXTURE(RefusingEngine, "what was refused first is given first") {
    ConnectQuietly();
    Refuse("ReloadSettings", RPC_E_CALL_REJECTED, 2);
    Reload();
    engine.mnuStartKiller_Click();
    engine.tmMenu_Timer();
    CHECK(server.script.calls == Calls{"ReloadSettings"});
    REQUIRE(PumpUntil([&] { return server.script.Count("Start") == 1; }));
    CHECK(server.script.calls == Calls{"ReloadSettings", "ReloadSettings", "ReloadSettings", "Start"});
    CHECK(done == 1);
}

TEST_CASE_FIXTURE(RefusingEngine, "a command chosen while an earlier one is refused for now follows it") {
    ConnectQuietly();
    Refuse("Start", RPC_E_CALL_REJECTED, 8);
    engine.mnuStartKiller_Click();
    REQUIRE(Tick());
    engine.mnuStopKiller_Click();
    REQUIRE(PumpUntil([&] { return server.script.Count("Stop") == 1; }));
    CHECK(server.script.calls.back() == "Stop");
    CHECK(server.script.Count("Start") == 9);
    CHECK(Enabled() == kStopped);
    CHECK_FALSE(AnyPending());
}

TEST_CASE_FIXTURE(RefusingEngine, "a refused call is given up when the engine is released") {
    ConnectQuietly();
    Refuse("ReloadSettings", RPC_E_CALL_REJECTED, 1000);
    Reload();
    Disconnect();
    server.script.calls.clear();
    PumpFor(300);
    CHECK(server.script.calls.empty());
    CHECK(done == 0);
    // The next window's engine is not held up by it.
    server.script.results.clear();
    server.script.within.clear();
    ConnectQuietly();
    Reload();
    CHECK(done == 1);
}

TEST_CASE_FIXTURE(RefusingEngine, "an engine that stays busy is given up after a bounded number of tries") {
    ConnectQuietly();
    Refuse("ReloadSettings", RPC_E_SERVERCALL_RETRYLATER, 1000);
    Reload();
    REQUIRE(PumpUntil([&] { return done == 1; }, 60000));
    CHECK(server.script.calls == Calls(101, "ReloadSettings"));
}

// Counted from the call that is refused: those before it are made once.
TEST_CASE_FIXTURE(RefusingEngine,
                  "each call that connects to a busy engine is made until the engine takes it") {
    const Calls kConnecting{"CreateInstance", "CreatePopup", "Advise", "State"};
    for (const HRESULT refusal : {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER}) {
        for (const std::string& member : kConnecting) {
            CAPTURE(refusal);
            CAPTURE(member);
            server.script.calls.clear();
            Refuse(member, refusal, 3);
            menu.EnableStoppedMenu();
            Connect();
            Calls expected;
            for (const std::string& call : kConnecting)
                expected.insert(expected.end(), call == member ? 4 : 1, call);
            CHECK(server.script.calls == expected);
            CHECK(server.ConnectionCount() == 1);
            CHECK(Enabled() == kRunning);
            Disconnect();
            CHECK(server.popup == nullptr);
        }
    }
}

TEST_CASE_FIXTURE(RefusingEngine, "the path of the log is asked for until a busy engine tells it") {
    ConnectQuietly();
    Refuse("LogFile", RPC_E_CALL_REJECTED, 3);
    CHECK(engine.LogFile() == server.script.logFile);
    CHECK(server.script.calls == Calls(4, "LogFile"));
}

TEST_CASE_FIXTURE(RefusingEngine, "an engine that stays busy holds the window up for a bounded time in all") {
    // Of the hundred tries, creating takes up one half.
    Refuse("CreateInstance", RPC_E_CALL_REJECTED, 50);
    server.script.results["CreatePopup"] = RPC_E_SERVERCALL_RETRYLATER;
    waited = 0;
    const ImportPatch wait("ole32.dll", "CoWaitForMultipleHandles", &NoteWait);
    Connect();
    CHECK(waited == 10000);
    CHECK(server.script.Count("CreateInstance") == 51);
    CHECK(server.script.Count("CreatePopup") == 51);
    CHECK(engine.Popup() == nullptr);
}

TEST_CASE_FIXTURE(RefusingEngine,
                  "while a busy engine is waited for, calls and paint messages come in, and no clicks") {
    ConnectQuietly();
    Refuse("LogFile", RPC_E_CALL_REJECTED, 10);
    InvalidateRect(window.Hwnd(), nullptr, TRUE);
    PostMessageW(window.Hwnd(), WM_LBUTTONDOWN, 0, 0);
    engine.LogFile();
    MSG message;
    CHECK_FALSE(GetUpdateRect(window.Hwnd(), nullptr, FALSE));
    CHECK(PeekMessageW(&message, window.Hwnd(), WM_LBUTTONDOWN, WM_LBUTTONDOWN, PM_REMOVE));
}

TEST_CASE_FIXTURE(RefusingEngine, "a wait for a busy engine ends when the engine is released") {
    for (const std::string member : {"CreateInstance", "CreatePopup", "Advise", "State"}) {
        CAPTURE(member);
        server.script.calls.clear();
        server.script.results[member] = RPC_E_CALL_REJECTED;
        server.script.within[member] = [&] {
            if (server.script.Count(member) == 3) Disconnect();
        };
        Connect();
        CHECK(server.script.Count(member) == 3);
        CHECK(engine.Popup() == nullptr);
        CHECK(server.popup == nullptr);
        server.script.results.clear();
        server.script.within.clear();
    }
}

TEST_CASE_FIXTURE(RefusingEngine, "in a sent message no call of the engine is waited for") {
    server.script.results["CreateInstance"] = RPC_E_CANTCALLOUT_ININPUTSYNCCALL;
    Connect();
    CHECK(server.script.calls == Calls{"CreateInstance"});
}

TEST_CASE_FIXTURE(RefusingEngine,
                  "events that are connected too late are disconnected even where that is refused") {
    server.script.behind["Advise"] = [&] {
        Disconnect();
        server.script.results["Unadvise"] = RPC_E_CALL_REJECTED;
    };
    server.script.within["Unadvise"] = [this, times = 2]() mutable {
        if (times-- == 0) server.script.results.erase("Unadvise");
    };
    Connect();
    CHECK(PumpUntil([&] { return server.popup == nullptr; }));
    CHECK(server.script.Count("Popup gone") == 1);
}

TEST_CASE_FIXTURE(RefusingEngine,
                  "an engine that is released while its events are connected keeps no connection") {
    server.script.within["Advise"] = [&] { Disconnect(); };
    Connect();
    CHECK(server.popup == nullptr);
    CHECK(engine.Popup() == nullptr);
    CHECK(server.script.Count("Popup gone") == 1);
}
