// More events than any engine should raise.
#include <doctest.h>

#include <psapi.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "sentrel1.h"
#include "tests/engine/session.h"
#include "tests/long_runs/resources.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// What a run may leave, whatever its length: a process grows and shrinks by pieces of up to a megabyte.
constexpr long kMemoryCeiling = 2 * 1024 * 1024;  // bytes

// The environment variable LONG_RUN holds how many times as often things are done as by default.
int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

ProcessHandle ProcessOf(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    return ProcessHandle(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
}

long PrivateBytesOf(const ProcessHandle& process) {
    PROCESS_MEMORY_COUNTERS counters{};
    REQUIRE(K32GetProcessMemoryInfo(process.Get(), &counters, sizeof(counters)));
    REQUIRE(counters.PagefileUsage > 0);
    return static_cast<long>(counters.PagefileUsage);
}

}  // namespace

TEST_CASE_FIXTURE(
    StartedSession,
    "a thousand closed pop-ups in a burst leave one icon and a manager that responded all along") {
    const int notices = Times(1000);
    for (int i = 0; i < 20; ++i)
        engine.Raise(L"Killed");
    const ProcessHandle process = ProcessOf(window);
    const long handles = KernelHandlesOf(GetProcessId(process.Get()));
    const long privateBytes = PrivateBytesOf(process);
    const DWORD start = GetTickCount();
    // Asks the window again and again whether it still takes messages.
    long asked = 0;
    long unanswered = 0;
    DWORD longest = 0;
    std::jthread watcher([&](const std::stop_token& over) {
        while (!over.stop_requested()) {
            const DWORD before = GetTickCount();
            DWORD_PTR result = 0;
            if (SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &result) == 0)
                ++unanswered;
            longest = std::max(longest, GetTickCount() - before);
            ++asked;
            Sleep(2);
        }
    });
    for (int i = 1; i <= notices; ++i) {
        engine.Raise(L"Killed");
        if (i % 100 == 0) Settle();
    }
    const DWORD took = GetTickCount() - start;
    watcher.request_stop();
    watcher.join();
    // Many times in the course of the burst, and not only after it.
    CHECK(asked > 10);
    CHECK(unanswered == 0);
    // The last animation adds the icon again.
    CHECK(WaitForIcon(1));
    CHECK(WaitUntil([&] { return KernelHandlesOf(GetProcessId(process.Get())) - handles < 8; }));
    const long left = PrivateBytesOf(process) - privateBytes;
    CHECK(left < kMemoryCeiling);
    CHECK(engine.Connections() == 1);
    CHECK(MenuOf(window) == kRunningMenu);
    CheckWorks();
    MESSAGE(notices << " Killed in " << took << " ms; the window was asked " << asked
                    << " times and responded within " << longest << " ms; private memory " << left / 1024
                    << " KB");
}

TEST_CASE_FIXTURE(
    StartedSession,
    "events that come while the engine is slow with the leave change nothing and bring nothing back") {
    // A stand-in that is slow with a call raises nothing meanwhile, an engine with several threads does: the
    // manager's own listener is told.
    const ComPtr<IDispatch> listener =
        ListenerTo(ObjectIn(Get(manager.Form().Get(), L"m_oPopup")).Get(), __uuidof(__Popup));
    REQUIRE(listener);
    const ProcessHandle process = ProcessOf(window);
    const HeldCall leave = engine.Hold(L"ReleasePopup");
    // The window goes in the midst of an animation.
    engine.Raise(L"Killed");
    Command(window, L'x');
    REQUIRE(leave.Arrives());
    long taken = 0;
    DWORD longest = 0;
    for (int i = 0; i < 300; ++i) {
        constexpr DISPID kEvents[] = {1, 3, 4};
        std::vector<Variant> arguments;
        if (i % 3 == 0) arguments = {4711L, L"Win a prize"};
        const DWORD start = GetTickCount();
        Variant none;
        taken += InvokeByNumber(listener.Get(), kEvents[i % 3], DISPATCH_METHOD, arguments, none) == S_OK;
        longest = std::max(longest, GetTickCount() - start);
    }
    CHECK(IsWindow(window));
    CHECK_FALSE(ShellHasIcon(window));
    CHECK(ShownIcons() == 0);
    leave.LetGo();
    CHECK(WaitUntil([&] { return !IsWindow(window); }));
    // Longer than a whole animation.
    PumpFor(1300);
    CHECK(ShownIcons() == 0);
    CHECK(engine.Popups() == 0);
    CHECK(engine.Connections() == 0);
    CHECK(engine.Count(L"ReleasePopup") == 1);
    engine.Raise(L"Killed");
    manager.LetGo();
    CHECK(manager.WaitForEnd());
    DWORD code = STILL_ACTIVE;
    CHECK(GetExitCodeProcess(process.Get(), &code) != FALSE);
    CHECK(code == 0);
    CHECK(ShownIcons() == 0);
    MESSAGE("300 events during the leave, " << taken << " returned success, each within " << longest
                                            << " ms");
}
