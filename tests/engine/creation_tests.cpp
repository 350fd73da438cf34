// How the manager comes to the engine and takes leave of it.
#include <doctest.h>

#include "tests/engine/session.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// "hwnd=... form=..." of the CreatePopup that the window's making sent.
std::wstring CreationArguments(const Session& session) {
    const Lines calls = session.engine.Calls();
    REQUIRE_FALSE(calls.empty());
    const std::wstring start =
        L"CreatePopup hwnd=" + std::to_wstring(HandleToLong(session.window)) + L" form=";
    REQUIRE(calls[0].starts_with(start));
    CHECK_FALSE(calls[0].starts_with(start + L"0 "));
    const size_t end = calls[0].find(L" mode=");
    CHECK(calls[0].substr(end) == L" mode=2");
    // Loading asks for the log once; nothing else comes by itself.
    CHECK(calls == Lines{calls[0], L"State", L"LogFile"});
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    const size_t first = calls[0].find(L"hwnd=");
    return calls[0].substr(first, end - first);
}

}  // namespace

TEST_CASE(
    "a window creates an engine object with its handle, a reference and mode 2, and takes leave with the "
    "same arguments; so does the one made after it") {
    Session session;
    session.Open();
    const HWND first = session.window;
    const std::wstring arguments = CreationArguments(session);
    REQUIRE(WaitForIcon());
    session.engine.ClearCalls();
    const auto checkLeft = [&] {
        REQUIRE(WaitUntil([&] { return !IsWindow(first); }));
        CHECK(session.engine.Calls() == Lines{L"ReleasePopup " + arguments});
        CHECK(session.engine.Popups() == 0);
        CHECK(session.engine.Connections() == 0);
        CHECK(session.engine.State() == 1);
        CHECK_FALSE(ShellHasIcon(first));
        CHECK(IconStory() == "add rest, delete");
    };
    SUBCASE("ReleaseConfig") {
        session.manager.Control()->ReleaseConfig();
        checkLeft();
    }
    SUBCASE("End of the Windows session") {
        CHECK(SendMessageW(first, WM_QUERYENDSESSION, 0, 0) != 0);
        // Called off at first.
        SendMessageW(first, WM_ENDSESSION, FALSE, 0);
        session.Settle();
        CHECK(IconStory() == "add rest");
        CHECK(session.engine.Calls() == Lines{});
        PostMessageW(first, WM_ENDSESSION, TRUE, 0);
        checkLeft();
    }
    SUBCASE("Exit") {
        Command(first, L'x');
        checkLeft();
        session.engine.ClearCalls();
        session.Open();
        CHECK(session.window != first);
        CreationArguments(session);
        CHECK(WaitForIcon());
        CHECK(IconStory() == "add rest, delete, add rest");
        PostGesture(session.window, WM_LBUTTONDBLCLK);
        CHECK(WaitUntil([&] { return session.Visible(); }));
        CHECK(MenuOf(session.window) == kRunningMenu);
    }
}

TEST_CASE_FIXTURE(StartedSession,
                  "Apply reaches the engine as one ReloadSettings after the store has been written") {
    engine.Set(L"WatchValue", L"Software\\Calvane\\Settings\\txtSpeed");
    ChangeSpeed();
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !Marked(); }));
    PumpFor(300);
    CHECK(engine.Calls() == Lines{L"ReloadSettings txtSpeed=800"});
}
