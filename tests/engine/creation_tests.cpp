// How the manager comes to the engine and takes leave of it.
#include <doctest.h>

#include "platform/com/variant.h"
#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// "hwnd=... form=..." of the CreatePopup that the window's making sent.
std::wstring CreationArguments(const Session& session) {
    constexpr std::wstring_view kStart = L"CreatePopup ";
    constexpr std::wstring_view kEnd = L" mode=2";
    const Lines calls = session.engine.Calls();
    REQUIRE_FALSE(calls.empty());
    REQUIRE(calls[0].starts_with(kStart));
    REQUIRE(calls[0].ends_with(kEnd));
    const std::wstring arguments =
        calls[0].substr(kStart.size(), calls[0].size() - kStart.size() - kEnd.size());
    const std::wstring hwnd = L"hwnd=" + std::to_wstring(HandleToLong(session.window)) + L" form=";
    REQUIRE(arguments.starts_with(hwnd));
    CHECK(arguments.substr(hwnd.size()) != L"0");
    // Loading asks for the log once; nothing else comes by itself.
    CHECK(calls == Lines{calls[0], L"State", L"LogFile"});
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    return arguments;
}

}  // namespace

TEST_CASE(
    "a window creates an engine object with its handle, a reference and mode 2, and takes leave with the "
    "same "
    "arguments; so does the one made after it") {
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
        CHECK(ToLong(Get(session.engine.Control(), L"State")) == 1);
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
        CHECK(LookOfMenu(session.window) == MenuLook::Running);
    }
}

TEST_CASE("Apply reaches the engine as one ReloadSettings after the store has been written") {
    Session session;
    Put(session.engine.Control(), L"WatchValue", L"Software\\Calvane\\Settings\\txtSpeed");
    session.Start();
    session.Spin(L"udbSpeed", true);
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    PumpFor(300);
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=800"});
}
