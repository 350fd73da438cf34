// How the manager comes to the engine and takes leave of it.
#include <doctest.h>

#include <thread>

#include "platform/com/variant.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// "hwnd=... form=..." of the CreatePopup that the window's making sent.
std::wstring CreationArguments(const Lines& calls) {
    constexpr std::wstring_view kStart = L"CreatePopup ";
    constexpr std::wstring_view kEnd = L" mode=2";
    REQUIRE_FALSE(calls.empty());
    REQUIRE(calls[0].starts_with(kStart));
    REQUIRE(calls[0].ends_with(kEnd));
    return calls[0].substr(kStart.size(), calls[0].size() - kStart.size() - kEnd.size());
}

// Each way of unloading the window.
void Release(Session& session) {
    session.manager.Control()->ReleaseConfig();
}
void Exit(Session& session) {
    Command(session.window, L'x');
}
void LogOff(Session& session) {
    CHECK(SendMessageW(session.window, WM_QUERYENDSESSION, 0, 0) != 0);
    PostMessageW(session.window, WM_ENDSESSION, TRUE, 0);
}

}  // namespace

TEST_CASE("the window's making creates one engine object, with the window's handle, a reference and mode 2") {
    Session session;
    session.window = session.manager.Window();
    const Lines calls = session.engine.Calls();
    const std::wstring arguments = CreationArguments(calls);
    const std::wstring hwnd = L"hwnd=" + std::to_wstring(HandleToLong(session.window)) + L" form=";
    REQUIRE(arguments.starts_with(hwnd));
    CHECK(arguments.substr(hwnd.size()) != L"0");
    CHECK_FALSE(arguments.substr(hwnd.size()).empty());
    // Loading asks for the log once; nothing else comes by itself.
    CHECK(calls == Lines{calls[0], L"State", L"LogFile"});
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);

    // A second client, and showing the window, make no second one.
    session.manager.Instance(formShow);
    session.manager.Instance(3);
    PumpFor(300);
    CHECK(session.engine.Calls() == calls);
    CHECK(Get(session.manager.Form().Get(), L"m_oPopup").Value().pdispVal != nullptr);
}

TEST_CASE(
    "unloading lets go of the engine object, then takes leave with the same arguments, and stops nothing") {
    Session session;
    void (*unload)(Session&) = nullptr;
    SUBCASE("ReleaseConfig") {
        unload = Release;
    }
    SUBCASE("Exit") {
        unload = Exit;
    }
    SUBCASE("End of the Windows session") {
        unload = LogOff;
    }
    session.window = session.manager.Window();
    const std::wstring arguments = CreationArguments(session.engine.Calls());
    session.engine.ClearCalls();
    REQUIRE(WaitForIcon());
    unload(session);
    REQUIRE(WaitUntil([&] { return !IsWindow(session.window); }));
    CHECK(session.engine.Calls() == Lines{L"ReleasePopup " + arguments});
    CHECK(session.engine.Popups() == 0);
    CHECK(session.engine.Connections() == 0);
    CHECK(ToLong(Get(session.engine.Control(), L"State")) == 1);
    CHECK_FALSE(ShellHasIcon(session.window));
    CHECK(IconStory() == "add rest, delete");
}

TEST_CASE("the engine object and its events are given up before the leave is taken") {
    Session session;
    session.Start();
    // While the engine takes its time, what it is asked next waits in its queue, before anything that the
    // manager could send after the reply.
    const HeldCall held = session.engine.Hold(L"ReleasePopup");
    Put(session.manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(session.window, WM_CLOSE, 0, 0);
    REQUIRE(held.Arrives());
    CHECK(IsWindow(session.window));
    CHECK_FALSE(ShellHasIcon(session.window));
    std::thread other([&] {
        Sleep(500);
        held.LetGo();
    });
    CHECK(session.engine.Popups() == 0);
    other.join();
    CHECK(session.engine.Connections() == 0);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);
    CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
}

TEST_CASE("a window made again after Exit creates an engine object again and has a working icon") {
    Session session;
    session.Start();
    const HWND first = session.window;
    Command(first, L'x');
    REQUIRE(WaitUntil([&] { return !IsWindow(first); }));
    PumpFor(300);
    // The window is gone; the process lives while a client holds it.
    CHECK(session.manager.Running());
    CHECK(session.engine.Count(L"ReleasePopup") == 1);

    session.engine.ClearCalls();
    session.window = session.manager.Window();
    CHECK(session.window != first);
    const std::wstring arguments = CreationArguments(session.engine.Calls());
    CHECK(arguments.starts_with(L"hwnd=" + std::to_wstring(HandleToLong(session.window)) + L' '));
    CHECK(session.engine.Popups() == 1);
    CHECK(WaitForIcon());
    CHECK(IconStory() == "add rest, delete, add rest");
    PostGesture(session.window, WM_LBUTTONDBLCLK);
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
}

TEST_CASE("after Exit the process ends with its last client") {
    Session session;
    session.Start();
    Command(session.window, L'x');
    REQUIRE(WaitUntil([&] { return !IsWindow(session.window); }));
    session.manager.LetGo();
    CHECK(session.manager.WaitForEnd());
    CHECK(session.engine.Popups() == 0);
    CHECK(ShownIcons() == 0);
}

TEST_CASE("a session end that is called off changes nothing") {
    Session session;
    session.Start();
    CHECK(SendMessageW(session.window, WM_QUERYENDSESSION, 0, 0) != 0);
    SendMessageW(session.window, WM_ENDSESSION, FALSE, 0);
    session.Settle();
    CHECK(IsWindow(session.window));
    CHECK(ShellHasIcon(session.window));
    CHECK(session.engine.Calls() == Lines{});
    CHECK(session.engine.Popups() == 1);
}
