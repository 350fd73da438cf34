// Engines that are missing, fail, die, or speak at the wrong moment.
#include <doctest.h>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// COM gives up a server that does not serve after 30 seconds: a call that takes as long waits for what is
// gone.
constexpr DWORD kHang = 25000;  // milliseconds

// What a user expects of the manager without any engine.
void CheckUsable(Session& session) {
    session.manager.Instance(formShow);
    CHECK(session.Visible());
    const HWND tab = session.manager.Control(L"tab");
    constexpr const wchar_t* kOnPages[] = {L"chkBeep",    L"lstExclude",    L"lstClosedWnd",
                                           L"lvwBanners", L"lvwSearchURLs", L"lblAbout"};
    for (const wchar_t* const control : kOnPages) {
        CAPTURE(ToAnsi(control));
        CHECK(IsWindowVisible(session.manager.Control(control)) != FALSE);
        PostMessageW(tab, WM_KEYDOWN, VK_RIGHT, 1);
        session.Settle();
    }
    for (size_t i = 0; i < std::size(kOnPages); ++i)
        PostMessageW(tab, WM_KEYDOWN, VK_LEFT, 1);
    session.Settle();

    const std::wstring before = session.manager.Text(L"txtSpeed");
    session.Spin(L"udbSpeed", before != L"10");
    CHECK(session.manager.Text(L"txtSpeed") != before);
    const std::wstring stored = Setting(L"Settings", L"txtSpeed");
    const DWORD start = GetTickCount();
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(GetTickCount() - start < kHang);
    CHECK(Setting(L"Settings", L"txtSpeed") != stored);
    session.Press(L"cmdRefreshLog");
    PostMessageW(session.window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    Command(session.window, L'o');
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(ShellHasIcon(session.window));
}

bool Becomes(Session& session, MenuLook look) {
    return WaitUntil([&] { return LookOfMenu(session.window) == look; });
}

bool HasEngine(Session& session) {
    return Get(session.manager.Form().Get(), L"m_oPopup").Value().pdispVal != nullptr;
}

}  // namespace

TEST_CASE("without a registered engine the manager works, and its menu stays as designed") {
    const NoEngineRegistered none;
    Manager manager(BeginTrayRecord());
    const DWORD start = GetTickCount();
    const HWND window = manager.Window();
    CHECK(GetTickCount() - start < kHang);
    CHECK(Get(manager.Form().Get(), L"m_oPopup").Value().pdispVal == nullptr);
    CHECK(LookOfMenu(window) == MenuLook::Designed);
    CHECK(WaitForIcon());
    const HWND apply = manager.Control(L"cmdApply");
    CHECK(IsWindowEnabled(apply) == FALSE);
    PostMessageW(manager.Control(L"chkBeep"), BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return IsWindowEnabled(apply) != FALSE; }));
    PostMessageW(apply, BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return IsWindowEnabled(apply) == FALSE; }));
    CHECK(Setting(L"Settings", L"chkBeep") == L"1");

    // Commands go nowhere, and the menu follows them as if they had arrived.
    Command(window, L't');
    CHECK(WaitUntil([&] { return LookOfMenu(window) == MenuLook::Stopped; }));
    Command(window, L's');
    CHECK(WaitUntil([&] { return LookOfMenu(window) == MenuLook::Running; }));
    Command(window, L'p');
    PumpFor(700);
    CHECK(LookOfMenu(window) == MenuLook::Running);
    Command(window, L'o');
    CHECK(WaitUntil([&] { return IsWindowVisible(window) != FALSE; }));
    Command(window, L'x');
    CHECK(WaitUntil([&] { return !IsWindow(window); }));
    manager.LetGo();
    CHECK(manager.WaitForEnd());
    CHECK(ShownIcons() == 0);
}

TEST_CASE("an engine object that cannot be created leaves a window that works") {
    Session session;
    SUBCASE("CreatePopup fails") {
        session.engine.Fail(L"CreatePopup");
        session.Start();
    }
    SUBCASE("The engine dies in CreatePopup") {
        session.engine.DieIn(L"CreatePopup");
        session.window = session.manager.Window();
        session.apply = session.manager.Control(L"cmdApply");
        CHECK(StandIn::Ended());
    }
    CHECK_FALSE(HasEngine(session));
    CHECK(LookOfMenu(session.window) == MenuLook::Designed);
    CheckUsable(session);
}

TEST_CASE("a state or a log that cannot be read leaves everything else working") {
    Session session;
    session.engine.Fail(L"State");
    session.engine.Fail(L"LogFile");
    session.Start();
    CHECK(HasEngine(session));
    CHECK(session.engine.Connections() == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Designed);
    CHECK(SendMessageW(session.manager.Control(L"lstClosedWnd"), LB_GETCOUNT, 0, 0) == 0);
    CheckUsable(session);
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
    session.engine.Raise(L"Stopped");
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
}

TEST_CASE("a command that fails in the engine is done with, and the menu is as if it had succeeded") {
    Session session;
    session.engine.RaiseByItself(false);
    session.Start();
    for (const wchar_t* const member : {L"Start", L"Stop", L"Pause", L"ReloadSettings", L"LogFile"})
        session.engine.Fail(member);
    Command(session.window, L'p');
    CHECK(WaitUntil([&] { return session.engine.Count(L"Pause") == 1; }));
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    Command(session.window, L't');
    CHECK(Becomes(session, MenuLook::Stopped));
    Command(session.window, L's');
    CHECK(Becomes(session, MenuLook::Running));
    CHECK(session.engine.Calls() == Lines{L"Pause", L"Stop", L"Start"});
    CheckUsable(session);
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
    // The next command is served as ever.
    Command(session.window, L't');
    CHECK(WaitUntil([&] { return session.engine.Calls().back() == L"Stop"; }));
}

TEST_CASE("a leave that fails does not keep the window") {
    Session session;
    session.engine.Fail(L"ReleasePopup");
    session.Start();
    Command(session.window, L'x');
    CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
    CHECK(session.engine.Count(L"ReleasePopup") == 1);
    CHECK(session.engine.Popups() == 0);
    CHECK_FALSE(ShellHasIcon(session.window));
    session.manager.LetGo();
    CHECK(session.manager.WaitForEnd());
}

TEST_CASE("an engine that dies in a call leaves a manager that works") {
    Session session;
    session.Start();
    SUBCASE("Stop") {
        session.engine.DieIn(L"Stop");
        Command(session.window, L't');
        CHECK(StandIn::Ended());
        CHECK(Becomes(session, MenuLook::Stopped));
    }
    SUBCASE("Pause") {
        session.engine.DieIn(L"Pause");
        Command(session.window, L'p');
        CHECK(StandIn::Ended());
        CHECK(LookOfMenu(session.window) == MenuLook::Running);
    }
    SUBCASE("ReloadSettings") {
        session.engine.DieIn(L"ReloadSettings");
        session.Apply();
        CHECK(StandIn::Ended());
        CHECK(WaitUntil([&] { return !session.Marked(); }));
    }
    SUBCASE("LogFile") {
        session.engine.DieIn(L"LogFile");
        session.Press(L"cmdRefreshLog");
        CHECK(StandIn::Ended());
    }
    CheckUsable(session);
}

TEST_CASE("an engine that dies in State or in Start leaves a manager that works") {
    Session session;
    SUBCASE("State") {
        session.engine.DieIn(L"State");
        session.window = session.manager.Window();
        session.apply = session.manager.Control(L"cmdApply");
        CHECK(StandIn::Ended());
        CHECK(LookOfMenu(session.window) == MenuLook::Designed);
    }
    SUBCASE("Start") {
        session.engine.State(2);
        session.Start();
        session.engine.DieIn(L"Start");
        Command(session.window, L's');
        CHECK(StandIn::Ended());
        CHECK(Becomes(session, MenuLook::Running));
    }
    CheckUsable(session);
}

TEST_CASE("the manager ends as ever when its engine dies in the leave or has died before") {
    Session session;
    session.Start();
    SUBCASE("In ReleasePopup") {
        session.engine.DieIn(L"ReleasePopup");
    }
    SUBCASE("Ended before") {
        StandIn::End();
    }
    SUBCASE("Terminated before") {
        StandIn::End(StandIn::Death::ByForce);
    }
    const DWORD start = GetTickCount();
    Command(session.window, L'x');
    CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
    CHECK_FALSE(ShellHasIcon(session.window));
    session.manager.LetGo();
    CHECK(session.manager.WaitForEnd());
    CHECK(GetTickCount() - start < kHang);
    CHECK(StandIn::Ended());
    CHECK(ShownIcons() == 0);
}

TEST_CASE("an engine killed between two calls is missed by nobody but its commands") {
    Session session;
    session.Start();
    session.engine.Raise(L"Killed");
    StandIn::End(StandIn::Death::ByForce);
    // The frames that it started run to their end.
    CHECK(WaitForIconAfter(1));
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    Command(session.window, L't');
    CHECK(Becomes(session, MenuLook::Stopped));
    Command(session.window, L's');
    CHECK(Becomes(session, MenuLook::Running));
    CheckUsable(session);
}

TEST_CASE("a terminated engine that COM still takes for alive leaves a manager that starts and works") {
    Session session;
    StandIn::End(StandIn::Death::ByForce);
    const DWORD start = GetTickCount();
    session.window = session.manager.Window();
    session.apply = session.manager.Control(L"cmdApply");
    CHECK(GetTickCount() - start < kHang);
    CheckUsable(session);
}

TEST_CASE("an engine killed while it is being called lets the manager go on") {
    Session session;
    session.Start();
    const HeldCall held = session.engine.Hold(L"ReloadSettings");
    session.Spin(L"udbSpeed", true);
    PostMessageW(session.apply, BM_CLICK, 0, 0);
    REQUIRE(held.Arrives());
    CHECK(Setting(L"Settings", L"txtSpeed") == L"800");
    CHECK(session.Marked());
    StandIn::End(StandIn::Death::ByForce);
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CheckUsable(session);
}

TEST_CASE("an engine that is slow with a command is not given it twice") {
    Session session;
    session.Start();
    const HeldCall held = session.engine.Hold(L"Stop");
    Command(session.window, L't');
    REQUIRE(held.Arrives());
    // Longer than the manager's timer takes twice, then once more.
    PumpFor(1300);
    held.LetGo();
    PumpFor(1100);
    CHECK(session.engine.Calls() == Lines{L"Stop"});
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
}

TEST_CASE("events that come while a dialog is open do all that they do") {
    Session session;
    session.manager.Instance(formShow);
    session.Start();
    REQUIRE(WaitForIcon());
    const HWND dialog = session.OpenDialog(L"cmdAddURL");
    REQUIRE(dialog != nullptr);
    session.engine.Raise(L"Killed");
    CHECK(WaitForIconAfter(1));
    session.engine.Raise(L"Stopped");
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    // A command from the menu is carried out meanwhile.
    Command(session.window, L's');
    CHECK(WaitUntil([&] { return session.engine.Calls() == Lines{L"Start"}; }));
    CHECK(IsWindow(dialog));
    CHECK(IsWindowEnabled(session.window) == FALSE);
    CHECK(session.CancelDialog(dialog));
    session.Settle();
    CHECK(session.Marked());
}
