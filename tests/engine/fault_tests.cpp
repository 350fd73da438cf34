// Engines that are missing or die.
#include <doctest.h>

#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

bool Becomes(HWND window, const std::wstring& menu) {
    return WaitUntil([&] { return MenuOf(window) == menu; });
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
    Session session;
    const NoEngineRegistered none;
    const DWORD start = GetTickCount();
    session.Open();
    CHECK(GetTickCount() - start < kHang);
    CHECK(Get(session.manager.Form().Get(), L"m_oPopup").Value().pdispVal == nullptr);
    CHECK(WaitForIcon());
    CHECK(MenuOf(session.window) == kDesignedMenu);
    Command(session.window, L't');
    CHECK(Becomes(session.window, kStoppedMenu));
    Command(session.window, L's');
    CHECK(Becomes(session.window, kRunningMenu));
    Command(session.window, L'p');
    PumpFor(700);
    CHECK(MenuOf(session.window) == kRunningMenu);
    session.CheckWorks(false);
    CheckExit(session);
}

TEST_CASE("an engine that dies in a call leaves a manager that works") {
    struct Row {
        const wchar_t* member;
        wchar_t menuItem;     // that leads to the call
        std::wstring button;  // that leads to it; where neither does, the window's making calls it
        std::wstring menu;
    };
    const Row rows[] = {
        {L"CreatePopup", 0, L"", kDesignedMenu},
        {L"State", 0, L"", kDesignedMenu},
        {L"Start", L's', L"", kRunningMenu},
        {L"Stop", L't', L"", kStoppedMenu},
        {L"Pause", L'p', L"", kDesignedMenu},
        {L"ReloadSettings", 0, L"cmdApply", kDesignedMenu},
        {L"LogFile", 0, L"cmdRefreshLog", kDesignedMenu},
    };
    for (const Row& row : rows) {
        CAPTURE(ToAnsi(row.member));
        Session session;
        // With every item of the menu enabled.
        session.engine.State(7);
        const bool isStart = row.menuItem == 0 && row.button.empty();
        if (!isStart) session.Start();
        session.engine.DieIn(row.member);
        if (isStart) session.Open();
        if (row.menuItem != 0) Command(session.window, row.menuItem);
        EnableWindow(session.apply, row.button == L"cmdApply");
        if (!row.button.empty()) session.Press(row.button.c_str());
        CHECK(StandIn::Ended());
        CHECK(WaitUntil([&] { return !session.Marked(); }));
        CHECK(Becomes(session.window, row.menu));
        session.CheckWorks(false);
    }
}

TEST_CASE_FIXTURE(StartedSession, "an engine that dies in the leave lets the manager end") {
    engine.DieIn(L"ReleasePopup");
    CheckExit(*this);
    CHECK(StandIn::Ended());
}

TEST_CASE("an engine that dies between two calls is missed by nobody but its commands") {
    StandIn::Death death{};
    SUBCASE("Ended") {
        death = StandIn::Death::ByOrder;
    }
    SUBCASE("Terminated") {
        death = StandIn::Death::ByForce;
    }
    Session session;
    session.Start();
    session.engine.Raise(L"Killed");
    StandIn::End(death);
    // The frames that it started run to their end.
    CHECK(WaitForIcon(1));
    CHECK(MenuOf(session.window) == kRunningMenu);
    Command(session.window, L't');
    CHECK(Becomes(session.window, kStoppedMenu));
    Command(session.window, L's');
    CHECK(Becomes(session.window, kRunningMenu));
    session.CheckWorks(false);
    CheckExit(session);
}

TEST_CASE("a terminated engine that COM still takes for alive leaves a manager that starts and works") {
    Session session;
    StandIn::End(StandIn::Death::ByForce);
    const DWORD start = GetTickCount();
    session.Open();
    CHECK(GetTickCount() - start < kHang);
    session.CheckWorks(false);
}
