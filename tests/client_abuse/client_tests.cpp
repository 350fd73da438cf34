// Many clients at once, clients that are killed, and clients that go on calling when another has called
// ReleaseConfig.
#include <doctest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include "platform/automation_error.h"
#include "tests/engine/session.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"
#include "tests/support/program.h"
#include "tests/support/wine.h"

namespace {

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
constexpr wchar_t kHoldsEvent[] = L"ClientAbuseHolds";

// A client with an apartment of its own.
struct Client {
    Client() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ThrowIfFailed(
            CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control)));
        long showType = FormHide;
        ThrowIfFailed(control->ConfigInstance(&showType, &config));
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        config.Reset();
        control.Reset();
        CoUninitialize();
    }

    LONG Window() { return ToLong(Get(config.Get(), L"ConfigHwnd")); }

    ComPtr<_ConfigControl> control;
    ComPtr<IDispatch> config;
};

// So many clients at once, in threads of their own. The test does not have to wait for them.
class Clients {
public:
    Clients(int count, const std::function<void(Client& client, int number)>& body) {
        m_state->running = count;
        for (int number = 0; number < count; ++number) {
            std::thread([body, number, state = m_state] {
                const bool isDone = ResumeNext([&] {
                    Client client;
                    body(client, number);
                });
                if (!isDone) ++state->failed;
                --state->running;
            }).detach();
        }
    }

    // Whether all of them come to their end.
    bool End(DWORD milliseconds = kPatience) const {
        return PumpUntil([this] { return m_state->running == 0; }, milliseconds) && m_state->failed == 0;
    }

private:
    struct State {
        std::atomic<int> running = 0;
        std::atomic<int> failed = 0;
    };
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

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

constexpr int kCallers = 3;
constexpr int kRounds = 300;  // of each of them

// What a call may return from the moment on in which ReleaseConfig has returned, beside the refusal: that
// there is no server any more.
constexpr HRESULT kGone[] = {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
                             HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), RPC_E_DISCONNECTED,
                             RPC_E_SERVER_DIED, RPC_E_SERVER_DIED_DNE};

// Shared by the test and the callers: how the calls end.
struct Board {
    std::atomic<int> ready = 0;  // callers
    std::atomic<bool> isReleased = false;
    std::atomic<int> early = 0;  // calls that began before ReleaseConfig had come
    std::atomic<int> refused = 0;
    std::atomic<int> gone = 0;
    std::atomic<int> rounds = 0;
    std::atomic<HRESULT> other = S_OK;  // what else a later call has returned

    void Take(const std::function<HRESULT()>& call) {
        const bool isEarly = !isReleased;
        const HRESULT result = call();
        if (isEarly) {
            ++early;
        } else if (result == CO_E_SERVER_STOPPING) {
            ++refused;
        } else if (std::ranges::find(kGone, result) != std::end(kGone)) {
            ++gone;
        } else {
            other = result == S_OK ? S_FALSE : result;
        }
    }
};

// Goes on until kRounds rounds have begun behind ReleaseConfig. The members are some of those that make or
// show something, or hand something out; every member is asked in the suite "pairs_end".
void CallEverything(Client& client, Board& board) {
    const ComPtr<IDispatch> form = ObjectIn(Get(client.config.Get(), L"ConfigForm"));
    const ComPtr<IDispatch> icon = ObjectIn(Get(client.config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    const auto invoke = [&](const ComPtr<IDispatch>& object, DISPID member, WORD flags,
                            const std::vector<Variant>& arguments = {}) {
        board.Take([&] {
            Variant result;
            return InvokeByNumber(object.Get(), member, flags, arguments, result);
        });
    };
    ++board.ready;
    for (int round = 0; round < kRounds;) {
        invoke(client.config, 0x68030002, DISPATCH_PROPERTYGET);  // ConfigHwnd
        invoke(form, 4, DISPATCH_METHOD);                         // Show
        invoke(form, 11, DISPATCH_METHOD, {L"cmdApply"});         // ControlHwnd
        invoke(icon, 3, DISPATCH_METHOD, {picture.Get()});        // AddIcon
        invoke(picture, 2, DISPATCH_PROPERTYGET);                 // Picture
        for (long showType : {1L, 2L, 3L}) {
            board.Take([&] {
                ComPtr<IDispatch> instance;
                return client.control->ConfigInstance(&showType, &instance);
            });
        }
        if (!board.isReleased) continue;
        board.Take([&] { return client.control->ReleaseConfig(); });
        ++round;
        ++board.rounds;
    }
}

}  // namespace

TEST_CASE_FIXTURE(Quiet,
                  "fifty clients at once get the same window, and the manager ends with the last of them") {
    constexpr int kClients = 50;
    constexpr int kCalls = 25;
    const LONG window = HandleToLong(manager.Window());
    const auto right = std::make_shared<std::atomic<int>>(0);
    const Clients clients(kClients, [=](Client& client, int number) {
        for (int i = 0; i < kCalls; ++i) {
            if (client.Window() == window) ++*right;
            // Late clients hold their references while the others leave.
            if (number % 2 == 0) Sleep(1);
        }
    });
    CHECK(clients.End(3 * kPatience));
    CHECK(right->load() == kClients * kCalls);
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
    const HWND window = manager.Window();
    const auto isSet = [](const FileHandle& handle) {
        return PumpUntil([&] { return WaitForSingleObject(handle.Get(), 0) == WAIT_OBJECT_0; });
    };
    for (int i = 0; i < 4; ++i) {
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
    if (manager.WaitForEnd(3000)) return;
    Manager next(true);
    CHECK(IsWindow(next.Window()));
    CHECK(manager.Running());
    next.Control()->ReleaseConfig();
    CHECK(manager.WaitForEnd());
    next.LetGo();
}

TEST_CASE(
    "from ReleaseConfig on clients' calls are refused, nothing comes back, and who comes now gets a new "
    "manager") {
    ForgetKilledServers();
    const auto board = std::make_shared<Board>();
    Session session;
    session.Start();
    const HWND window = session.window;
    const Clients callers(kCallers, [board](Client& client, int) { CallEverything(client, *board); });
    REQUIRE(PumpUntil([&] { return board->ready == kCallers && board->early > 100; }));

    // While the engine holds its leave up, the manager serves its clients.
    const HeldCall held = session.engine.Hold(L"ReleasePopup");
    const auto released = std::make_shared<std::atomic<HRESULT>>(E_PENDING);
    const Clients last(1, [released](Client& client, int) { *released = client.control->ReleaseConfig(); });
    REQUIRE(held.Arrives());
    board->isReleased = true;
    ComPtr<_ConfigControl> next;
    REQUIRE(CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&next)) ==
            S_OK);
    CHECK(ProcessesOf(kProgram).size() == 2);
    // Few calls: the engine may not hold the leave up for longer than the manager waits for it.
    CHECK(PumpUntil([&] { return board->rounds >= kCallers; }));
    CHECK(board->refused > 0);
    CHECK(board->gone == 0);

    held.LetGo();
    REQUIRE(last.End());
    // The process may have ended before its reply.
    CHECK((*released == S_OK || *released == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)));
    REQUIRE(session.manager.WaitForEnd());
    REQUIRE(callers.End());
    CHECK(board->rounds == kCallers * kRounds);
    CHECK(board->other == S_OK);
    CHECK_FALSE(IsWindow(window));
    CHECK(ShownIcons() == 0);
    CHECK(session.engine.Popups() == 0);
    CHECK(session.engine.Connections() == 0);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);

    long showType = FormHide;
    ComPtr<IDispatch> config;
    REQUIRE(next->ConfigInstance(&showType, &config) == S_OK);
    CHECK(IsWindow(static_cast<HWND>(LongToHandle(ToLong(Get(config.Get(), L"ConfigHwnd"))))));
    config.Reset();
    next->ReleaseConfig();
    next.Reset();
    session.manager.LetGo();
    CHECK(ProgramEnds(kProgram));
}
