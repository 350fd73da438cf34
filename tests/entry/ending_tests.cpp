// What happens in a process that ReleaseConfig is about to end. It refuses everything from then on, so that
// each of these cases runs in a process of its own.
#include <doctest.h>

#include "platform/text.h"
#include "tests/entry/alone.h"
#include "tests/entry/start_journal.h"

namespace {

constexpr const char* kMoments[] = {"CreateInstance", "CreatePopup", "State", "LogFile"};

}  // namespace

TEST_CASE("ReleaseConfig takes the window away and ends the process after its reply") {
    CheckInOwnProcess(L"alone: ReleaseConfig with a window");
}

TEST_CASE("alone: ReleaseConfig with a window" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    const auto window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
    CHECK(inside.control->ReleaseConfig() == S_OK);
    CHECK_FALSE(IsWindow(window));
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);
    CHECK(exits == 0);
    REQUIRE(static_cast<bool>(endProcess));
    CHECK(endDelay == USER_TIMER_MINIMUM);

    SUBCASE("clients that come late get an error") {
        ComPtr<IDispatch> late;
        CHECK(inside.Instance(formShow, late) == CO_E_SERVER_STOPPING);
        CHECK(late == nullptr);
        CHECK(inside.control->ReleaseConfig() == CO_E_SERVER_STOPPING);
        VARIANT value;
        CHECK(g_oConfig->get_ConfigHwnd(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_oConfig->get_ConfigForm(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_oConfig->get_ShellIconClass(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_lngClientCount == 0);
    }
    CHECK_THROWS_AS(endProcess(nullptr, WM_TIMER, 0, 0), Exit);
    CHECK(exits == 1);
}

TEST_CASE("ReleaseConfig ends the process at once where there is no timer") {
    CheckInOwnProcess(L"alone: ReleaseConfig without a timer");
}

TEST_CASE("alone: ReleaseConfig without a timer" * doctest::skip(true)) {
    timersFail = true;
    const NotedEnd end;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    inside.control->ReleaseConfig();
    CHECK(exits == 1);
    CHECK(g_frmConfig == nullptr);
}

TEST_CASE("ReleaseConfig without a window ends the process all the same") {
    CheckInOwnProcess(L"alone: ReleaseConfig without a window");
}

TEST_CASE("alone: ReleaseConfig without a window" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    inside.Instance(FormHide);
    g_frmConfig->Unload();
    CHECK(inside.control->ReleaseConfig() == S_OK);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 1);
    CHECK(static_cast<bool>(endProcess));
}

TEST_CASE("ReleaseConfig that comes in while the engine is being connected ends the start with an error") {
    for (const char* const moment : kMoments) {
        CheckInOwnProcess(L"alone: ReleaseConfig while the engine is called", FromAnsi(moment));
    }
}

TEST_CASE("alone: ReleaseConfig while the engine is called" * doctest::skip(true)) {
    const NotedEnd end;
    Inside inside;
    StartJournal journal;
    for (const char* const moment : kMoments) {
        SUBCASE(moment) {
            HRESULT ended = E_FAIL;
            journal.engine.script.within[moment] = [&] {
                ended = MakeObject<ConfigControl>()->ReleaseConfig();
            };
            ComPtr<IDispatch> config;
            CHECK(inside.Instance(formShow, config) == CO_E_SERVER_STOPPING);
            CHECK(ended == S_OK);
            CHECK(config == nullptr);
            CHECK(g_frmConfig == nullptr);
            CHECK(journal.Count("window") == 1);
            CHECK(FindWindowW(L"#32770", L"Calvane") == nullptr);
            CHECK(static_cast<bool>(endProcess));
            CHECK(exits == 0);
        }
    }
}
