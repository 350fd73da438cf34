// Many clients at once, and clients that are killed.
#include <doctest.h>

#include <memory>
#include <string>

#include "tests/client_abuse/client.h"
#include "tests/engine/stand_in.h"
#include "tests/support/alone.h"
#include "tests/support/killed_servers.h"

namespace {

constexpr wchar_t kHoldsEvent[] = L"ClientAbuseHolds";

struct QuietStart {
    QuietStart() { ForgetKilledServers(); }

    const NoEngineRegistered noEngine;
};

// A manager without an engine.
struct Quiet : QuietStart {
    // The exit entry unloads the window.
    void Exit() {
        const HWND window = manager.Window();
        Put(manager.Form().Get(), L"b_OKtoUnload", true);
        PostMessageW(window, WM_CLOSE, 0, 0);
        CHECK(WaitUntil([&] { return !IsWindow(window); }));
    }

    Manager manager{false, Manager::Start::Ahead};
};

}  // namespace

TEST_CASE_FIXTURE(Quiet,
                  "fifty clients at once get the same window, and the manager ends with the last of them") {
    constexpr int kClients = 50;
    constexpr int kCalls = 25;
    const LONG window = HandleToLong(manager.Window());
    const auto right = std::make_shared<std::atomic<int>>(0);
    const DWORD start = GetTickCount();
    const Clients clients(kClients, [=](Client& client, int number) {
        for (int i = 0; i < kCalls; ++i) {
            if (client.Window() == window) ++*right;
            // Late clients hold their references while the others leave.
            if (number % 2 == 0) Sleep(1);
        }
    });
    CHECK(clients.End(3 * kPatience));
    CHECK(right->load() == kClients * kCalls);
    MESSAGE(kClients << " clients at once: " << right->load() << " right results, " << GetTickCount() - start
                     << " ms");
    Exit();
    CHECK(manager.Running());
    manager.LetGo();
    CHECK(manager.WaitForEnd());
}

TEST_CASE("client: holds references" * doctest::skip()) {
    Client client;
    client.Window();
    const FileHandle holds(OpenEventW(EVENT_MODIFY_STATE, FALSE, kHoldsEvent));
    SetEvent(holds.Get());
    Sleep(INFINITE);
}

TEST_CASE_FIXTURE(
    Quiet,
    "clients that are killed while they hold references do not trouble the others, nor the next one, who "
    "can end the manager") {
    constexpr int kClients = 4;
    const HWND window = manager.Window();
    const auto isSet = [](const FileHandle& handle) {
        return PumpUntil([&] { return WaitForSingleObject(handle.Get(), 0) == WAIT_OBJECT_0; });
    };
    for (int i = 0; i < kClients; ++i) {
        const FileHandle holds(CreateEventW(nullptr, TRUE, FALSE, kHoldsEvent));
        const FileHandle client = StartAlone("client: holds references");
        CHECK(isSet(holds));
        TerminateProcess(client.Get(), 1);
        CHECK(isSet(client));
        CHECK(manager.Window() == window);
    }
    manager.Instance(formShow);
    CHECK(IsWindowVisible(window));
    Exit();
    manager.LetGo();
    // Windows gives up a dead client's references after some minutes, Wine never does: it goes on serving.
    const bool ended = manager.WaitForEnd(3000);
    if (!ended) {
        Manager next(true);
        CHECK(IsWindow(next.Window()));
        CHECK(manager.Running());
        next.Control()->ReleaseConfig();
        CHECK(manager.WaitForEnd());
        next.LetGo();
    }
    MESSAGE(kClients << std::string(ended
                                        ? " clients killed: the manager ended by itself"
                                        : " clients killed: the manager served the next, and ended for it"));
}
