// Engines that return late, and more events than any engine should raise.
#include <doctest.h>

#include <ocidl.h>
#include <psapi.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "sentrel1.h"
#include "tests/engine/session.h"
#include "tests/long_runs/resources.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

// What a run may leave, whatever its length: a process grows and shrinks by pieces of up to a megabyte.
constexpr long kMemoryCeiling = 2 * 1024 * 1024;  // bytes

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

// The manager's own listener to the engine's events, called without the engine: a stand-in that is slow with
// a call raises nothing meanwhile, an engine with several threads does.
class EventSink {
public:
    // The window is connected to the engine.
    explicit EventSink(Session& session) {
        REQUIRE(session.engine.Connections() == 1);
        const ComPtr<IDispatch> popup = ObjectIn(Get(session.manager.Form().Get(), L"m_oPopup"));
        ComPtr<IConnectionPointContainer> container;
        ThrowIfFailed(popup->QueryInterface(IID_PPV_ARGS(&container)));
        ComPtr<IConnectionPoint> point;
        ThrowIfFailed(container->FindConnectionPoint(__uuidof(__Popup), &point));
        ComPtr<IEnumConnections> connections;
        ThrowIfFailed(point->EnumConnections(&connections));
        CONNECTDATA connection{};
        ULONG fetched = 0;
        // Between processes Wine returns any result and any count; the connection itself is right.
        connections->Next(1, &connection, &fetched);
        REQUIRE(connection.pUnk != nullptr);
        const HRESULT result = connection.pUnk->QueryInterface(IID_PPV_ARGS(&m_sink));
        connection.pUnk->Release();
        ThrowIfFailed(result);
    }

    // A hundred times Killed, Started and Stopped. Returns how many of them the manager took.
    long RaiseAll() {
        for (int i = 0; i < 100; ++i) {
            Raise(1, {4711L, L"Win a prize"});
            Raise(3, {});
            Raise(4, {});
        }
        return m_taken;
    }

    DWORD Longest() const noexcept { return m_longest; }

private:
    void Raise(DISPID event, const std::vector<Variant>& arguments) {
        const DWORD start = GetTickCount();
        Variant none;
        m_taken += InvokeByNumber(m_sink.Get(), event, DISPATCH_METHOD, arguments, none) == S_OK;
        m_longest = std::max(m_longest, GetTickCount() - start);
    }

    ComPtr<IDispatch> m_sink;
    long m_taken = 0;
    DWORD m_longest = 0;
};

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
    session.CheckWorks();
}

TEST_CASE("a log whose place the engine tells late is shown when it is told") {
    Session session;
    const TestFolder folder;
    Put(session.engine.Control(), L"LogFile", folder.Path(L"closed.log"));
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
    session.CheckWorks();
    // The animation of the closed pop-up runs to its end, however long the engine kept it waiting.
    CHECK(WaitForIconAfter(1));
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
    session.CheckWorks();
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
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
    CHECK(WaitForIconAfter(1));
    Held after;
    CHECK(WaitUntil([&] {
        after = HeldBy(session.window);
        return after.handles - before.handles < 8;
    }));
    CHECK(after.privateBytes - before.privateBytes < kMemoryCeiling);
    CHECK(session.engine.Connections() == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    session.CheckWorks();
    MESSAGE(notices << " Killed in " << took << " ms; the window was asked " << watcher.Asked()
                    << " times and responded within " << watcher.Longest() << " ms; kernel handles "
                    << after.handles - before.handles << ", private memory "
                    << (after.privateBytes - before.privateBytes) / 1024 << " KB");
}

TEST_CASE(
    "events that come while the engine is slow with an Apply are all served, the last one in the menu") {
    Session session;
    session.Start();
    EventSink events(session);
    REQUIRE(WaitForIcon());
    const HeldCall reload = session.engine.Hold(L"ReloadSettings");
    const std::wstring saved = BeginApply(session, reload);
    REQUIRE(session.Marked());
    CHECK(events.RaiseAll() == 300);
    // All of them were served before the engine returned.
    CHECK(session.Marked());
    reload.LetGo();
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(Setting(L"Settings", L"txtSpeed") == saved);
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    CHECK(WaitForIconAfter(1));
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    session.CheckWorks();
    MESSAGE("300 events during an Apply, each served within " << events.Longest() << " ms");
}

TEST_CASE("events that come while the engine is slow with the leave change nothing and bring nothing back") {
    Session session;
    session.Start();
    EventSink events(session);
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
    const long taken = events.RaiseAll();
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
    MESSAGE("300 events during the leave, " << taken << " returned success, each within " << events.Longest()
                                            << " ms");
}
