// Engines that are missing or die.
#include <doctest.h>

#include "tests/engine/session.h"
#include "tests/engine_control/menu_items.h"

namespace {

bool Becomes(HWND window, const std::string& menu) {
    return WaitUntil([&] { return MenuOf(window) == menu; });
}

// The menu is as given and follows commands though they reach nobody.
void CheckCommands(HWND window, const std::string& menu) {
    CHECK(MenuOf(window) == menu);
    Command(window, L't');
    CHECK(Becomes(window, kStopped));
    Command(window, L's');
    CHECK(Becomes(window, kRunning));
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
    CheckCommands(session.window, kDesigned);
    session.CheckWorks();
    CheckExit(session);
}

TEST_CASE("an engine that dies in a call leaves a manager that works") {
    struct Row {
        std::wstring member;
        std::string menu;
        wchar_t command = 0;  // that leads to the call; where there is none, the making of the window does
    };
    const Row rows[] = {{L"CreatePopup", kDesigned},   {L"State", kDesigned},     {L"LogFile", kDesigned},
                        {L"Start", kRunning, L's'},    {L"Stop", kStopped, L't'}, {L"Pause", kDesigned, L'p'},
                        {L"ReloadSettings", kDesigned}};
    for (const Row& row : rows) {
        CAPTURE(row.member);
        Session session;
        // With every item of the menu enabled.
        session.engine.State(7);
        session.engine.DieIn(row.member.c_str());
        session.Open();
        if (row.command != 0) Command(session.window, row.command);
        if (row.member == L"ReloadSettings") session.CheckWorks();
        CHECK(StandIn::Ended());
        CHECK(Becomes(session.window, row.menu));
        session.CheckWorks();
    }
}

TEST_CASE_FIXTURE(StartedSession, "an engine that dies in the leave lets the manager end") {
    engine.DieIn(L"ReleasePopup");
    CheckExit(*this);
    CHECK(StandIn::Ended());
}

TEST_CASE("an engine that dies between two calls is missed by nobody but its commands") {
    for (const auto death : {StandIn::Death::ByOrder, StandIn::Death::ByForce}) {
        CAPTURE(death);
        Session session;
        session.Start();
        session.engine.Raise(L"Killed");
        StandIn::End(death);
        // The frames that it started run to their end.
        CHECK(WaitForIcon(1));
        CheckCommands(session.window, kRunning);
        session.CheckWorks();
        CheckExit(session);
    }
}

TEST_CASE("a terminated engine that COM still takes for alive leaves a manager that starts and works") {
    Session session;
    StandIn::End(StandIn::Death::ByForce);
    const DWORD start = GetTickCount();
    session.Open();
    CHECK(GetTickCount() - start < kHang);
    session.CheckWorks();
}
