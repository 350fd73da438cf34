// While nobody wants anything of it, the manager does nothing.
#include <commctrl.h>

#include <algorithm>
#include <vector>

#include "tests/call_counts/counted_manager.h"

namespace {

// Longer than any period of its timers: the animation's, the menu's and that of an icon which is refused.
constexpr DWORD kIdleMilliseconds = 2500;
constexpr DWORD kQuietMilliseconds = 500;

// Handles the messages that come within the time and returns their numbers.
std::vector<UINT> MessagesWithin(DWORD milliseconds) {
    std::vector<UINT> messages;
    const DWORD start = GetTickCount();
    for (DWORD passed = 0; passed < milliseconds; passed = GetTickCount() - start) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds - passed, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            messages.push_back(message.message);
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return messages;
}

// What that itself calls.
CallCounts WithoutThePump(CallCounts counts) {
    for (const char* const function : {"GetTickCount", "MsgWaitForMultipleObjects", "PeekMessageW",
                                       "TranslateMessage", "DispatchMessageW"})
        counts.erase(function);
    return counts;
}

void WaitForQuiet() {
    for (int tries = 0; tries < 20 && !MessagesWithin(kQuietMilliseconds).empty(); ++tries)
        continue;
}

void CheckIdle(CountedManager& manager) {
    WaitForQuiet();
    manager.Forget();
    std::vector<UINT> messages;
    manager.counter.Count([&] { messages = MessagesWithin(kIdleMilliseconds); });
    CHECK(messages == std::vector<UINT>{});
    CHECK(WithoutThePump(manager.counter.All()) == CallCounts{});
    CHECK(manager.engine.script.calls.empty());
    CHECK(manager.shell.calls.empty());
}

}  // namespace

TEST_CASE_FIXTURE(CountedManager, "a hidden manager gets no message and calls nothing") {
    Start();
    CheckIdle(*this);
}

TEST_CASE_FIXTURE(CountedManager, "a shown manager gets no message and calls nothing, on whatever page") {
    Start();
    inside.Instance(formShow);
    CheckIdle(*this);
    inside.Instance(kShowAbout);
    CheckIdle(*this);
}

TEST_CASE_FIXTURE(CountedManager,
                  "a notice and a tray command keep the manager busy, and leave it idle again") {
    Start();
    WaitForQuiet();
    counter.Count([&] {
        engine.Raise(1, {0L, L"http://ads.example.com"});
        const std::vector<UINT> messages = MessagesWithin(kIdleMilliseconds);
        // Three frames and the end.
        CHECK(std::count(messages.begin(), messages.end(), static_cast<UINT>(WM_TIMER)) == 4);
    });
    CHECK(counter.Timers() == CallCounts{{"SetTimer", 1}, {"KillTimer", 1}});
    CHECK(counter.Shell()["Shell_NotifyIconA"] == 5);
    CheckIdle(*this);
}

TEST_CASE_FIXTURE(CountedManager, "Apply, Cancel and a refresh of the log leave the manager idle") {
    Start();
    for (const wchar_t* const button : {L"cmdRefreshLog", L"cmdApply", L"cmdOK", L"cmdCancel"})
        Press(button);
    CheckIdle(*this);
}
