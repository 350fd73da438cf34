// Engines that return late, and more events than any engine should raise.
#include <doctest.h>

#include <psapi.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/engine_storm/event_sink.h"
#include "tests/long_runs/resources.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// What a run may leave, whatever its length: a process grows and shrinks by pieces of up to a megabyte.
constexpr long kMemoryCeiling = 2 * 1024 * 1024;  // bytes

void CheckWorks(Session& session) {
    const std::wstring before = session.manager.Text(L"txtSpeed");
    const std::wstring stored = Setting(L"Settings", L"txtSpeed");
    session.Spin(L"udbSpeed", before != L"10");
    CHECK(session.manager.Text(L"txtSpeed") != before);
    CHECK(WaitUntil([&] { return session.Marked(); }));
    const size_t reloads = session.engine.Count(L"ReloadSettings");
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(Setting(L"Settings", L"txtSpeed") != stored);
    CHECK(session.engine.Count(L"ReloadSettings") == reloads + 1);
    session.manager.Instance(formShow);
    CHECK(session.Visible());
    PostMessageW(session.window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    Command(session.window, L'o');
    CHECK(WaitUntil([&] { return session.Visible(); }));
}

// added: how many icons it comes after.
void CheckOneIcon(Session& session, int added = 0) {
    CHECK(WaitForIconAfter(added));
    CHECK(ShellHasIcon(session.window));
}

// Changes a setting and presses cmdApply; returns when the change is stored and the engine is being called.
std::wstring BeginApply(Session& session, const HeldCall& reload) {
    const std::wstring stored = Setting(L"Settings", L"txtSpeed");
    session.Spin(L"udbSpeed", true);
    REQUIRE(WaitUntil([&] { return session.Marked(); }));
    PostMessageW(session.apply, BM_CLICK, 0, 0);
    REQUIRE(reload.Arrives());
    const std::wstring saved = Setting(L"Settings", L"txtSpeed");
    REQUIRE(saved != stored);
    return saved;
}

// The environment variable LONG_RUN holds how many times as often things are done as by default.
int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

// What a process holds.
struct Held {
    long handles = 0;
    long privateBytes = 0;
};

Held HeldBy(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const ProcessHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
    PROCESS_MEMORY_COUNTERS counters{};
    REQUIRE(K32GetProcessMemoryInfo(process.Get(), &counters, sizeof(counters)));
    REQUIRE(counters.PagefileUsage > 0);
    return {KernelHandlesOf(id), static_cast<long>(counters.PagefileUsage)};
}

// An empty log of the test's own.
std::wstring NewLog() {
    wchar_t folder[MAX_PATH] = L"";
    GetTempPathW(MAX_PATH, folder);
    std::wstring path = std::wstring(folder) + L"engine_storm.log";
    DeleteFileW(path.c_str());
    return path;
}

// Asks the window again and again whether it still takes messages, from a thread of its own.
class Watcher {
public:
    explicit Watcher(HWND window)
        : m_thread([this, window] {
              while (!m_done) {
                  const DWORD start = GetTickCount();
                  DWORD_PTR result = 0;
                  if (SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &result) == 0)
                      ++m_unanswered;
                  m_longest = std::max(m_longest, GetTickCount() - start);
                  ++m_asked;
                  Sleep(2);
              }
          }) {}
    ~Watcher() { Stop(); }

    void Stop() {
        m_done = true;
        if (m_thread.joinable()) m_thread.join();
    }

    // Valid once stopped.
    long Asked() const noexcept { return m_asked; }
    long Unanswered() const noexcept { return m_unanswered; }
    DWORD Longest() const noexcept { return m_longest; }

private:
    std::atomic<bool> m_done = false;
    long m_asked = 0;
    long m_unanswered = 0;
    DWORD m_longest = 0;
    std::thread m_thread;
};

}  // namespace

TEST_CASE("an Apply whose engine returns after 10 seconds is done when it does") {
    Session session;
    session.engine.State(2);
    session.Start();
    const HeldCall reload = session.engine.Hold(L"ReloadSettings");
    const std::wstring saved = BeginApply(session, reload);
    CHECK(session.Marked());
    for (const DWORD start = GetTickCount(); GetTickCount() - start < 10000; PumpFor(100)) {
        // A client is served meanwhile.
        session.Settle();
        REQUIRE(session.Marked());
    }
    reload.LetGo();
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(Setting(L"Settings", L"txtSpeed") == saved);
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    CheckWorks(session);
    CheckOneIcon(session);
}

TEST_CASE("a log whose place the engine tells late is shown when it is told") {
    Session session;
    const std::wstring log = NewLog();
    Put(session.engine.Control(), L"LogFile", Variant(log));
    session.Start();
    REQUIRE(WaitForIcon());
    const HWND list = session.manager.Control(L"lstClosedWnd");
    const HWND refresh = session.manager.Control(L"cmdRefreshLog");
    CHECK(SendMessageW(list, LB_GETCOUNT, 0, 0) == 0);
    Call(session.engine.Control(), L"ClosePopup", {0L, L"http://ads.example.com/late.html"});
    const HeldCall place = session.engine.Hold(L"LogFile");
    PostMessageW(refresh, BM_CLICK, 0, 0);
    REQUIRE(place.Arrives());
    CHECK(SendMessageW(list, LB_GETCOUNT, 0, 0) == 0);
    // A client is served meanwhile.
    session.Settle();
    CHECK(SendMessageW(list, LB_GETCOUNT, 0, 0) == 0);
    place.LetGo();
    CHECK(WaitUntil([&] { return SendMessageW(list, LB_GETCOUNT, 0, 0) == 1; }));
    CHECK(session.engine.Count(L"LogFile") == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CheckWorks(session);
    // The animation of the closed pop-up runs to its end, however long the engine kept it waiting.
    CheckOneIcon(session, 1);
    DeleteFileW(log.c_str());
}

TEST_CASE(
    "a start that the engine holds up ends with a window that works and a menu that follows the state") {
    const wchar_t* member = nullptr;
    SUBCASE("CreatePopup") {
        member = L"CreatePopup";
    }
    SUBCASE("State") {
        member = L"State";
    }
    Session session;
    session.engine.State(2);
    const HeldCall held = session.engine.Hold(member);
    std::atomic<bool> isLetGo = false;
    std::thread engine([&] {
        while (!held.HasArrived())
            Sleep(10);
        Sleep(3000);
        isLetGo = true;
        held.LetGo();
    });
    session.Start();
    CHECK(isLetGo);
    engine.join();
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    CHECK_FALSE(session.Marked());
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    CheckWorks(session);
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CheckOneIcon(session);
}

TEST_CASE("a hundred Applies of the manager's own process leave the registry keys of their values, no more") {
    const int applies = Times(100);
    Session session;
    session.Start();
    // While the engine is called the manager serves its other clients: its reply does not mean that it is
    // done.
    const auto apply = [&] {
        session.Apply();
        REQUIRE(WaitUntil([&] { return !session.Marked(); }));
    };
    constexpr int kFirst = 20;
    for (int i = 0; i < kFirst; ++i)
        apply();
    const Held early = HeldBy(session.window);
    for (int i = 0; i < kFirst; ++i)
        apply();
    const Held before = HeldBy(session.window);
    // Besides the keys of its values a process holds some handles for a moment.
    const long keys = (before.handles - early.handles + kFirst / 2) / kFirst;
    const size_t reloads = session.engine.Count(L"ReloadSettings");
    const DWORD start = GetTickCount();
    for (int i = 0; i < applies; ++i)
        apply();
    const DWORD took = GetTickCount() - start;
    Held after;
    CHECK(WaitUntil([&] {
        after = HeldBy(session.window);
        return after.handles - before.handles - keys * applies < kFirst;
    }));
    CHECK(session.engine.Count(L"ReloadSettings") == reloads + static_cast<size_t>(applies));
    CHECK(keys > 30);
    CHECK(keys < 60);
    CHECK(after.privateBytes - before.privateBytes < kMemoryCeiling);
    CheckWorks(session);
    CheckOneIcon(session);
    MESSAGE(applies << " Applies in " << took << " ms; kernel handles " << after.handles - before.handles
                    << " (of them by design " << keys * applies << " registry keys), private memory "
                    << (after.privateBytes - before.privateBytes) / 1024 << " KB");
}

TEST_CASE("a thousand closed pop-ups in a burst leave one icon and a manager that responded all along") {
    const int notices = Times(1000);
    Session session;
    session.Start();
    REQUIRE(WaitForIcon());
    for (int i = 0; i < 20; ++i)
        session.engine.Raise(L"Killed");
    const Held before = HeldBy(session.window);
    const DWORD start = GetTickCount();
    Watcher watcher(session.window);
    for (int i = 1; i <= notices; ++i) {
        session.engine.Raise(L"Killed");
        if (i % 100 == 0) session.Settle();
    }
    const DWORD took = GetTickCount() - start;
    watcher.Stop();
    // Many times in the course of the burst, and not only after it.
    CHECK(watcher.Asked() > 10);
    CHECK(watcher.Unanswered() == 0);
    // The last animation adds the icon again.
    CheckOneIcon(session, 1);
    Held after;
    CHECK(WaitUntil([&] {
        after = HeldBy(session.window);
        return after.handles - before.handles < 8;
    }));
    CHECK(after.privateBytes - before.privateBytes < kMemoryCeiling);
    CHECK(session.engine.Connections() == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CheckWorks(session);
    MESSAGE(notices << " Killed in " << took << " ms; the window was asked " << watcher.Asked()
                    << " times and responded within " << watcher.Longest() << " ms; kernel handles "
                    << after.handles - before.handles << ", private memory "
                    << (after.privateBytes - before.privateBytes) / 1024 << " KB");
}

TEST_CASE(
    "events that come while the engine is slow with an Apply are all served, the last one in the menu") {
    Session session;
    session.Start();
    REQUIRE(session.engine.Connections() == 1);
    EventSink events(session.manager.Form().Get());
    REQUIRE(WaitForIcon());
    const HeldCall reload = session.engine.Hold(L"ReloadSettings");
    const std::wstring saved = BeginApply(session, reload);
    REQUIRE(session.Marked());
    for (int i = 0; i < 100; ++i) {
        REQUIRE(events.Killed() == S_OK);
        REQUIRE(events.Started() == S_OK);
        REQUIRE(events.Stopped() == S_OK);
    }
    // All of them were served before the engine returned.
    CHECK(session.Marked());
    reload.LetGo();
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(Setting(L"Settings", L"txtSpeed") == saved);
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    CheckOneIcon(session, 1);
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CheckWorks(session);
    MESSAGE(events.Raised() << " events during an Apply, each served within " << events.Longest() << " ms");
}

TEST_CASE("events that come while the engine is slow with the leave change nothing and bring nothing back") {
    Session session;
    session.Start();
    REQUIRE(session.engine.Connections() == 1);
    EventSink events(session.manager.Form().Get());
    REQUIRE(WaitForIcon());
    DWORD id = 0;
    GetWindowThreadProcessId(session.window, &id);
    const ProcessHandle process(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id));
    REQUIRE(process);
    const HeldCall leave = session.engine.Hold(L"ReleasePopup");
    // The window goes in the midst of an animation.
    session.engine.Raise(L"Killed");
    Command(session.window, L'x');
    REQUIRE(leave.Arrives());
    REQUIRE_FALSE(ShellHasIcon(session.window));
    REQUIRE(IsWindow(session.window));
    long served = 0;
    for (int i = 0; i < 100; ++i) {
        served += events.Killed() == S_OK;
        served += events.Started() == S_OK;
        served += events.Stopped() == S_OK;
    }
    CHECK(IsWindow(session.window));
    CHECK_FALSE(ShellHasIcon(session.window));
    CHECK(ShownIcons() == 0);
    leave.LetGo();
    CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
    // Longer than a whole animation.
    PumpFor(1300);
    CHECK(ShownIcons() == 0);
    CHECK(session.engine.Popups() == 0);
    CHECK(session.engine.Connections() == 0);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);
    session.engine.Raise(L"Killed");
    session.manager.LetGo();
    CHECK(session.manager.WaitForEnd());
    DWORD code = STILL_ACTIVE;
    CHECK(GetExitCodeProcess(process.Get(), &code) != FALSE);
    CHECK(code == 0);
    CHECK(ShownIcons() == 0);
    MESSAGE(events.Raised() << " events during the leave, " << served << " returned success, each within "
                            << events.Longest() << " ms");
}
