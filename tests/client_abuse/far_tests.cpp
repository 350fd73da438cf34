// Senseless calls and messages from another process, many clients at once, and clients that are killed.
#include <doctest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/client_abuse/client.h"
#include "tests/client_abuse/messages.h"
#include "tests/client_abuse/random_calls.h"
#include "tests/engine/stand_in.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"

namespace {

constexpr DWORD kAllPatience = 3 * kPatience;  // for many clients at once
constexpr wchar_t kHoldsEvent[] = L"ClientAbuseHolds";

struct QuietStart {
    QuietStart() { ForgetKilledServers(); }

    NoEngineRegistered noEngine;
};

BOOL CALLBACK TakeWindow(HWND window, LPARAM parameter) {
    reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    return TRUE;
}

bool Responds(HWND window) {
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &result) != 0;
}

// Runs the body in that many threads at once; false when not all of them come to an end in time.
bool InThreads(int count, const std::function<void(int number)>& body, DWORD milliseconds,
               const std::function<void()>& meanwhile = {}) {
    auto running = std::make_shared<LONG>(count);
    for (int number = 0; number < count; ++number) {
        std::thread([body, number, running] {
            body(number);
            InterlockedDecrement(running.get());
        }).detach();
    }
    if (meanwhile) meanwhile();
    return PumpUntil([&] { return InterlockedCompareExchange(running.get(), 0, 0) == 0; }, milliseconds);
}

}  // namespace

TEST_CASE("senseless calls and messages of another process leave the manager serving its clients") {
    const long callCount = Chance::Count("ABUSE_FAR_CALLS", 2000);
    const long messages = Chance::Count("ABUSE_FAR_MESSAGES", 20000);
    const QuietStart quiet;
    Manager manager(false, Manager::Start::Ahead);
    const HWND window = manager.Window();
    const ComPtr<IDispatch> config = manager.Instance(FormHide);
    const ComPtr<IDispatch> form = manager.Form();
    const ComPtr<IDispatch> icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    ComPtr<IDispatch> control;
    REQUIRE(manager.Control()->QueryInterface(IID_PPV_ARGS(&control)) == S_OK);

    const uint32_t seed = Chance::Seed() + 1;
    Chance chance(seed);
    DWORD start = GetTickCount();
    DWORD slowest = 0;
    {
        // What is passed for a window is no real one: the icon's animation would draw at it for ever.
        RandomCalls calls(chance,
                          {{control, {0x60030000}, {0x60030001}},
                           {config, {0x68030000, 0x68030001, 0x68030002}, {}},
                           {form, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {}},
                           {icon, {1, 2, 3, 4, 5}, {}},
                           {picture, {1, 2}, {}}},
                          {0, HandleToLong(window)}, false);
        for (long i = 0; i < callCount; ++i) {
            CAPTURE(seed);
            CAPTURE(i);
            const DWORD before = GetTickCount();
            calls.One();
            slowest = std::max(slowest, GetTickCount() - before);
            if (i % 100 == 0) REQUIRE(manager.Running());
        }
        long succeeded = 0;
        for (const auto& [result, count] : calls.Results()) {
            if (SUCCEEDED(result)) succeeded += count;
        }
        CHECK(succeeded > callCount / 20);
        MESSAGE("across processes: " << callCount << " calls from seed " << seed << ", " << succeeded
                                     << " carried out, " << calls.Results().size() << " different results, "
                                     << GetTickCount() - start << " ms, slowest " << slowest << " ms");
    }
    CHECK(ToLong(Get(config.Get(), L"ConfigHwnd")) == HandleToLong(window));
    Put(form.Get(), L"b_OKtoUnload", false);

    std::vector<HWND> all{window};
    EnumChildWindows(window, TakeWindow, reinterpret_cast<LPARAM>(&all));
    start = GetTickCount();
    for (long i = 0; i < messages; ++i) {
        const HWND target = chance.From(all);
        MSG message{};
        do {
            message = target == window ? RandomDialogMessage(chance, window, chance.From(all))
                                       : RandomControlMessage(chance, target);
            // Those would open a dialog or the menu, and wait for a user.
        } while (message.message == BM_CLICK || message.message == 1025 ||
                 (message.message == WM_COMMAND && HIWORD(message.wParam) == 0));
        PostMessageW(message.hwnd, message.message, message.wParam, message.lParam);
        // Before the queue is full.
        if (i % 1000 == 999) {
            CAPTURE(i);
            REQUIRE(Responds(window));
            REQUIRE(ToLong(Get(config.Get(), L"ConfigHwnd")) == HandleToLong(window));
        }
    }
    MESSAGE("across processes: " << messages << " posted messages, " << GetTickCount() - start << " ms");
    CHECK(std::ranges::all_of(all, [](HWND each) { return IsWindow(each) != FALSE; }));
    manager.Instance(formShow);
    CHECK(IsWindowVisible(window));
    const HWND apply = manager.Control(L"cmdApply");
    EnableWindow(apply, TRUE);
    PostMessageW(apply, BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindowEnabled(apply); }));
}

TEST_CASE("fifty clients at once get the same window, and the manager ends with the last of them") {
    constexpr int kClients = 50;
    constexpr int kCalls = 25;
    const QuietStart quiet;
    Manager manager(false, Manager::Start::Ahead);
    const LONG window = HandleToLong(manager.Window());
    LONG right = 0;
    LONG failed = 0;
    const DWORD start = GetTickCount();
    CHECK(InThreads(
        kClients,
        [&](int number) {
            if (!ResumeNext([&] {
                    Client client;
                    for (int i = 0; i < kCalls; ++i) {
                        if (client.Window() == window) InterlockedIncrement(&right);
                        // Late clients hold their references while the others leave.
                        if (number % 2 == 0) Sleep(1);
                    }
                })) {
                InterlockedIncrement(&failed);
            }
        },
        kAllPatience));
    CHECK(right == kClients * kCalls);
    CHECK(failed == 0);
    MESSAGE(kClients << " clients at once: " << right << " right results, " << failed << " failures, "
                     << GetTickCount() - start << " ms");

    // Unloaded by its exit entry the manager waits for its clients, and for nothing else.
    Put(manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(manager.Window(), WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))); }));
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

TEST_CASE(
    "clients that are killed while they hold references do not trouble the others, nor the next one, who "
    "can end the manager") {
    constexpr int kClients = 4;
    const QuietStart quiet;
    Manager manager(false, Manager::Start::Ahead);
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
    Put(manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindow(window); }));
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
    MESSAGE(kClients << " clients killed with references in their hands: the manager "
                     << (ended ? "ended by itself" : "went on, served the next client and ended for it"));
}
