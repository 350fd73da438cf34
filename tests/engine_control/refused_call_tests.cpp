// Calls of the engine that are refused for now: it is busy, or Windows lets no call out while this thread
// handles a message that another program has sent.
#include <doctest.h>

#include "tests/engine_control/engine_fixture.h"
#include "tests/support/import_fake.h"
#include "tests/support/message_pump.h"

namespace {

constexpr UINT kAgain = 100;  // milliseconds
const Calls kConnecting{"CreateInstance", "CreatePopup", "Advise", "State"};

struct RefusingEngine : TickingEngine {
    void Reload() {
        engine.ReloadSettings([this] {
            CHECK(server.script.Count("ReloadSettings") > 0);
            ++done;
        });
    }

    int done = 0;
};

}  // namespace

TEST_CASE_FIXTURE(RefusingEngine,
                  "a reload that is refused for now is made again until the engine takes it, a "
                  "hundred times at most; any other result is final") {
    struct Row {
        HRESULT result;
        int times;
        size_t calls;
    };
    const Row rows[] = {
        {S_OK, 0, 1},
        {RPC_E_CALL_REJECTED, 3, 4},
        {RPC_E_SERVERCALL_RETRYLATER, 3, 4},
        {RPC_E_CANTCALLOUT_ININPUTSYNCCALL, 3, 4},
        {RPC_E_SERVERCALL_RETRYLATER, 1000, 101},
        {E_FAIL, 1000, 1},
        {RPC_E_DISCONNECTED, 1000, 1},
        {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), 1000, 1},
        {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), 1000, 1},
    };
    for (const Row& row : rows) {
        CAPTURE(row.result);
        CAPTURE(row.times);
        done = 0;
        ConnectQuietly();
        Refuse("ReloadSettings", row.result, row.times);
        Reload();
        for (size_t made = 1; made < row.calls; ++made) {
            CHECK(server.script.calls == Calls(made, "ReloadSettings"));
            CHECK(done == 0);
            REQUIRE(clock.Tick(kAgain) == 1);
        }
        CHECK(server.script.calls == Calls(row.calls, "ReloadSettings"));
        CHECK(done == 1);
        CHECK_FALSE(clock.AnyRuns());
    }
}

TEST_CASE_FIXTURE(RefusingEngine,
                  "a menu command that is refused for now, and what follows it, reach the engine later, once "
                  "and in their order") {
    server.script.state = 2;
    ConnectQuietly();
    Refuse("Start", RPC_E_CALL_REJECTED, 2);
    engine.mnuStartKiller_Click();
    Tick();
    Reload();
    engine.mnuPauseKiller_Click();
    Tick();
    CHECK(server.script.calls == Calls{"Start"});
    clock.Tick(kAgain);
    CHECK(Enabled() == kStopped);
    CHECK(done == 0);
    clock.Tick(kAgain);
    CHECK(server.script.calls == Calls{"Start", "Start", "Start", "ReloadSettings", "Pause"});
    CHECK(Enabled() == kRunning);
    CHECK(done == 1);
    CHECK_FALSE(AnyPending());
    CHECK_FALSE(clock.AnyRuns());
}

TEST_CASE_FIXTURE(RefusingEngine, "a refused call is given up when the engine is released") {
    ConnectQuietly();
    Refuse("ReloadSettings", RPC_E_CALL_REJECTED, 1000);
    Reload();
    Disconnect();
    CHECK_FALSE(clock.AnyRuns());
    CHECK(done == 0);
    // The next window's engine is not held up by it.
    server.script.results.clear();
    ConnectQuietly();
    Reload();
    CHECK(done == 1);
}

// Counted from the call that is refused: those before it are made once.
TEST_CASE_FIXTURE(RefusingEngine,
                  "each call of a busy engine whose result is needed is made until the engine takes it") {
    Calls needed = kConnecting;
    needed.push_back("LogFile");
    for (const HRESULT refusal : {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER}) {
        for (const std::string& member : needed) {
            CAPTURE(refusal);
            CAPTURE(member);
            server.script.calls.clear();
            Refuse(member, refusal, 3);
            menu.EnableStoppedMenu();
            Connect();
            CHECK(engine.LogFile() == server.script.logFile);
            Calls expected;
            for (const std::string& call : needed)
                expected.insert(expected.end(), call == member ? 4 : 1, call);
            CHECK(server.script.calls == expected);
            CHECK(server.ConnectionCount() == 1);
            CHECK(Enabled() == kRunning);
            Disconnect();
            CHECK(server.popup == nullptr);
        }
    }
}

TEST_CASE_FIXTURE(RefusingEngine,
                  "an engine that stays busy holds the window up for a bounded time in all, and not at all "
                  "in a sent message") {
    DWORD waited = 0;  // milliseconds
    const ImportFake<"CoWaitForMultipleHandles", decltype(&CoWaitForMultipleHandles)> wait{
        "ole32.dll", [&](DWORD, DWORD milliseconds, ULONG, HANDLE*, DWORD*) {
            waited += milliseconds;
            return RPC_S_CALLPENDING;
        }};
    server.script.results["CreateInstance"] = RPC_E_CANTCALLOUT_ININPUTSYNCCALL;
    Connect();
    CHECK(server.script.calls == Calls{"CreateInstance"});
    CHECK(waited == 0);

    // Of the hundred tries, creating takes up one half.
    server.script.calls.clear();
    Refuse("CreateInstance", RPC_E_CALL_REJECTED, 50);
    server.script.results["CreatePopup"] = RPC_E_SERVERCALL_RETRYLATER;
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
    for (const std::string& member : kConnecting) {
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
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "an engine that is released while its events are connected keeps no connection") {
    SUBCASE("before they are") {
        server.script.within["Advise"] = [&] { Disconnect(); };
    }
    SUBCASE("when they are, and to disconnect them is refused at first") {
        server.script.behind["Advise"] = [&] {
            Disconnect();
            Refuse("Unadvise", RPC_E_CALL_REJECTED, 2);
        };
    }
    Connect();
    CHECK(engine.Popup() == nullptr);
    CHECK(PumpUntil([&] { return server.popup == nullptr; }));
    CHECK(server.script.Count("Popup gone") == 1);
}
