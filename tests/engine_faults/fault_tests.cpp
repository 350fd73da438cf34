// Engines that are missing, fail, die, or speak at the wrong moment.
#include <doctest.h>

#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

bool Becomes(const Session& session, MenuLook look) {
    return WaitUntil([&] { return LookOfMenu(session.window) == look; });
}

bool HasEngine(Session& session) {
    return Get(session.manager.Form().Get(), L"m_oPopup").Value().pdispVal != nullptr;
}

void CheckExit(Session& session) {
    const DWORD start = GetTickCount();
    Command(session.window, L'x');
    CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
    CHECK_FALSE(ShellHasIcon(session.window));
    session.manager.LetGo();
    CHECK(session.manager.WaitForEnd());
    CHECK(GetTickCount() - start < kHang);
    CHECK(ShownIcons() == 0);
}

}  // namespace

TEST_CASE("without a registered engine the window works, and its menu follows commands as if they arrived") {
    const NoEngineRegistered none;
    Manager manager(BeginTrayRecord());
    const DWORD start = GetTickCount();
    const HWND window = manager.Window();
    CHECK(GetTickCount() - start < kHang);
    CHECK(Get(manager.Form().Get(), L"m_oPopup").Value().pdispVal == nullptr);
    CHECK(WaitForIcon());
    const HWND apply = manager.Control(L"cmdApply");
    PostMessageW(manager.Control(L"chkBeep"), BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return IsWindowEnabled(apply) != FALSE; }));
    PostMessageW(manager.Control(L"cmdRefreshLog"), BM_CLICK, 0, 0);
    PostMessageW(apply, BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return IsWindowEnabled(apply) == FALSE; }));
    CHECK(Setting(L"Settings", L"chkBeep") == L"1");

    CHECK(LookOfMenu(window) == MenuLook::Designed);
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
}

TEST_CASE(
    "an engine that fails in every call leaves a manager that works, with a menu as if it had succeeded") {
    Session session;
    session.engine.RaiseByItself(false);
    session.engine.Fail(L"State");
    session.engine.Fail(L"LogFile");
    session.Start();
    CHECK(HasEngine(session));
    CHECK(session.engine.Connections() == 1);
    CHECK(LookOfMenu(session.window) == MenuLook::Designed);
    CHECK(SendMessageW(session.manager.Control(L"lstClosedWnd"), LB_GETCOUNT, 0, 0) == 0);

    for (const wchar_t* const member :
         {L"Start", L"Stop", L"Pause", L"ReloadSettings", L"LogFile", L"ReleasePopup"})
        session.engine.Fail(member);
    Command(session.window, L'p');
    CHECK(WaitUntil([&] { return session.engine.Count(L"Pause") == 1; }));
    CHECK(LookOfMenu(session.window) == MenuLook::Designed);
    Command(session.window, L't');
    CHECK(Becomes(session, MenuLook::Stopped));
    Command(session.window, L's');
    CHECK(Becomes(session, MenuLook::Running));
    CHECK(session.engine.Calls() == Lines{L"Pause", L"Stop", L"Start"});
    session.CheckWorks();
    // The next command is served as ever, and so are events.
    Command(session.window, L't');
    CHECK(WaitUntil([&] { return session.engine.Calls().back() == L"Stop"; }));
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CheckExit(session);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);
    CHECK(session.engine.Popups() == 0);
}

TEST_CASE("an engine that dies in a call leaves a manager that works") {
    struct Row {
        const wchar_t* member;
        void (*call)(Session& session);  // null: the window's making calls it
        MenuLook look;
    };
    const Row rows[] = {
        {L"CreatePopup", nullptr, MenuLook::Designed},
        {L"State", nullptr, MenuLook::Designed},
        {L"Start", [](Session& session) { Command(session.window, L's'); }, MenuLook::Running},
        {L"Stop", [](Session& session) { Command(session.window, L't'); }, MenuLook::Stopped},
        {L"Pause", [](Session& session) { Command(session.window, L'p'); }, MenuLook::Designed},
        {L"ReloadSettings", [](Session& session) { session.Apply(); }, MenuLook::Designed},
        {L"LogFile", [](Session& session) { session.Press(L"cmdRefreshLog"); }, MenuLook::Designed},
    };
    for (const Row& row : rows) {
        CAPTURE(ToAnsi(row.member));
        Session session;
        // With every item of the menu enabled.
        session.engine.State(7);
        if (row.call != nullptr) session.Start();
        session.engine.DieIn(row.member);
        if (row.call == nullptr) {
            session.Open();
        } else {
            row.call(session);
        }
        CHECK(StandIn::Ended());
        CHECK(WaitUntil([&] { return !session.Marked(); }));
        CHECK(Becomes(session, row.look));
        session.CheckWorks(false);
    }
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
    CheckExit(session);
    CHECK(StandIn::Ended());
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
    session.CheckWorks(false);
}

TEST_CASE("a terminated engine that COM still takes for alive leaves a manager that starts and works") {
    Session session;
    StandIn::End(StandIn::Death::ByForce);
    const DWORD start = GetTickCount();
    session.Open();
    CHECK(GetTickCount() - start < kHang);
    session.CheckWorks(false);
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
    session.CheckWorks(false);
}

TEST_CASE("events that come while a dialog is open do all that they do, and so does a command") {
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
    Command(session.window, L's');
    CHECK(WaitUntil([&] { return session.engine.Calls() == Lines{L"Start"}; }));
    CHECK(IsWindowEnabled(session.window) == FALSE);
    CHECK(session.CancelDialog(dialog));
}
