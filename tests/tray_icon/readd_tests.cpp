#include <doctest.h>

#include <utility>

#include "tests/support/message_pump.h"
#include "tests/tray_icon/timer_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

using Actions = std::vector<DWORD>;

}  // namespace

TEST_CASE_FIXTURE(TrayIconFixture, "a new taskbar gets the icon again, once, with the current tip") {
    SetUp();
    icon->OnTaskbarCreated();
    PumpFor(50);
    REQUIRE(shell.Actions() == Actions{NIM_ADD, NIM_ADD});
    CHECK(shell.calls[1].Icon() == kRestHandle);
    CHECK(shell.calls[1].Tip() == std::string("Calvane Sentrel\0", 16) + std::string(48, ' '));
}

TEST_CASE_FIXTURE(TrayIconFixture, "a new taskbar gets no icon where none is added") {
    icon->OnTaskbarCreated();
    SetUp();
    icon->RemoveIcon();
    icon->OnTaskbarCreated();
    PumpFor(50);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation goes on across a new taskbar") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    icon->OnTaskbarCreated();
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(shell.Actions() ==
          Actions{NIM_ADD, NIM_MODIFY, NIM_ADD, NIM_MODIFY, NIM_MODIFY, NIM_DELETE, NIM_ADD});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a new taskbar that arrives while the icon is being removed does not bring it back") {
    SetUp();
    shell.result = [this](DWORD action) {
        if (action == NIM_DELETE) icon->OnTaskbarCreated();
        return TRUE;
    };
    icon->Class_Terminate();
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the owner's release while a new taskbar's icon is prepared leaves it away") {
    SetUp();
    rest->asked = [this] { icon->Class_Terminate(); };
    icon->OnTaskbarCreated();
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "the resting picture lives while it is asked for its icon") {
    SetUp();
    bool isGone = false;
    bool wasGone = true;
    rest->gone = [&] { isGone = true; };
    rest->asked = [&] {
        icon->Class_Terminate();
        wasGone = isGone;
    };
    rest.Reset();
    icon->OnTaskbarCreated();
    CHECK_FALSE(wasGone);
    CHECK(isGone);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a refused add is tried again every two seconds until the shell takes it") {
    TimerCalls timers;
    int refusals = 3;
    shell.result = [&](DWORD action) { return action == NIM_ADD && refusals-- <= 0 ? TRUE : FALSE; };
    SetUp();
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 7; }));
    PumpFor(80);
    CHECK(timers.periods == std::vector<UINT>{2000});
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_ADD, NIM_MODIFY, NIM_ADD, NIM_MODIFY, NIM_ADD});
    CHECK(shell.calls.back().Icon() == kRestHandle);
    CHECK(shell.calls.back().Tip().substr(0, 15) == "Calvane Sentrel");
}

TEST_CASE_FIXTURE(TrayIconFixture, "an icon that the shell took without saying so is not added twice") {
    TimerCalls timers;
    shell.result = [](DWORD action) { return action == NIM_ADD ? FALSE : TRUE; };
    SetUp();
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    PumpFor(80);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY});
}

TEST_CASE_FIXTURE(TrayIconFixture, "a shell that always refuses is left alone after half a minute of tries") {
    TimerCalls timers;
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    // 15 times 2 seconds, each a change and an add.
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 31; }));
    PumpFor(100);
    CHECK(shell.calls.size() == 31);
    CHECK(timers.periods.size() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an icon that was taken at once is never tried again") {
    TimerCalls timers;
    SetUp();
    PumpFor(50);
    CHECK(timers.periods.empty());
    CHECK(shell.calls.size() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing a refused icon ends the tries") {
    TimerCalls timers;
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    icon->RemoveIcon();
    CHECK_FALSE(timers.AnyRuns());
    PumpFor(80);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "the owner's release ends the tries") {
    TimerCalls timers;
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    icon.Reset();
    CHECK_FALSE(timers.AnyRuns());
    PumpFor(80);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the owner's release from within a try is survived, and the icon stays away") {
    TimerCalls timers;
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    rest->asked = [this] {
        icon->Class_Terminate();
        icon.Reset();
    };
    REQUIRE(PumpUntil([&] { return icon == nullptr; }));
    PumpFor(80);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "a new taskbar that refuses the icon is tried again too") {
    TimerCalls timers;
    SetUp();
    int refusals = 1;
    shell.result = [&](DWORD action) { return action == NIM_ADD && refusals-- <= 0 ? TRUE : FALSE; };
    icon->OnTaskbarCreated();
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 4; }));
    PumpFor(80);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_ADD, NIM_MODIFY, NIM_ADD});
}

TEST_CASE_FIXTURE(TrayIconFixture, "a refused add comes two seconds later in real time") {
    bool refused = false;
    shell.result = [&](DWORD action) {
        return action == NIM_ADD && std::exchange(refused, true) ? TRUE : FALSE;
    };
    SetUp();
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 3; }));
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_ADD});
    CHECK(shell.calls[2].time - shell.calls[0].time >= 1980);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an icon that is removed before the shell has taken it does not stay") {
    const auto removeOnce = [this](DWORD action) {
        if (action == NIM_ADD) {
            shell.result = nullptr;
            icon->RemoveIcon();
        }
        return TRUE;
    };
    SUBCASE("when it is added") {
        shell.result = removeOnce;
        SetUp();
        CHECK(shell.Actions() == std::vector<DWORD>{NIM_ADD, NIM_DELETE, NIM_DELETE});
    }
    SUBCASE("when the taskbar is new") {
        SetUp();
        shell.calls.clear();
        shell.result = removeOnce;
        icon->OnTaskbarCreated();
        CHECK(shell.Actions() == std::vector<DWORD>{NIM_ADD, NIM_DELETE, NIM_DELETE});
    }
}
