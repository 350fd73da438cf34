// An icon that the shell refuses, and a taskbar that is new.
#include <doctest.h>

#include "tests/tray_icon/timer_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"

TEST_CASE_FIXTURE(TrayIconFixture, "a new taskbar gets an added icon again, once, with the current tip") {
    icon->OnTaskbarCreated();
    SetUp();
    icon->OnTaskbarCreated();
    REQUIRE(Story() == "add rest, add rest");
    CHECK(shell.calls[1].Tip() == kTipBytes);
    icon->RemoveIcon();
    icon->OnTaskbarCreated();
    PumpFor(50);
    CHECK(Story() == "add rest, add rest, delete");
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation goes on across a new taskbar") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    REQUIRE(Asked(2));
    icon->OnTaskbarCreated();
    REQUIRE(Ends());
    CHECK(Story() == "add rest, 0, add rest, 1, 2, delete, add rest");
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a new taskbar that arrives while the icon is being removed does not bring it back") {
    SetUp();
    shell.result = [this](DWORD action) {
        if (action == NIM_DELETE) icon->OnTaskbarCreated();
        return TRUE;
    };
    icon->Class_Terminate();
    CHECK(Story() == "add rest, delete");
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the owner's release while a new taskbar's icon is prepared leaves it away") {
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
    CHECK(Story() == "add rest, delete");
    // The picture lives while it is asked.
    CHECK_FALSE(wasGone);
    CHECK(isGone);
}

TEST_CASE("a refused add is tried again every two seconds, for half a minute, until the shell has the icon") {
    struct Row {
        std::string what;
        BOOL (*shell)(DWORD action, size_t call);  // counted from 1
        std::string story;
        std::vector<UINT> periods;
        bool isNew = false;  // the taskbar, once the icon was added
    };
    const std::string kTry = ", rest, add rest";
    std::string always = "add rest";
    for (int i = 0; i < 15; ++i)
        always += kTry;
    const Row rows[] = {
        {"taken at once", [](DWORD, size_t) { return TRUE; }, "add rest", {}},
        {"taken at the third try",
         [](DWORD action, size_t call) -> BOOL { return action == NIM_ADD && call == 7; },
         "add rest" + kTry + kTry + kTry,
         {2000}},
        {"taken without saying so, and not added twice",
         [](DWORD action, size_t) -> BOOL { return action == NIM_MODIFY; },
         "add rest, rest",
         {2000}},
        {"refused for good", [](DWORD, size_t) { return FALSE; }, always, {2000}},
        {"refused by a new taskbar",
         [](DWORD, size_t call) -> BOOL { return call == 1 || call == 4; },
         "add rest" + std::string(", add rest") + kTry,
         {2000},
         true},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        TimerCalls timers;
        TrayIconFixture tray;
        tray.shell.result = [&](DWORD action) { return row.shell(action, tray.shell.calls.size()); };
        tray.SetUp();
        if (row.isNew) tray.icon->OnTaskbarCreated();
        REQUIRE(PumpUntil([&] { return tray.Story() == row.story; }));
        PumpFor(100);
        CHECK(tray.Story() == row.story);
        CHECK(timers.periods == row.periods);
        if (tray.shell.calls.size() > 1) CHECK(tray.shell.calls.back().Tip() == kTipBytes);
    }
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing a refused icon, and the owner's release, end the tries") {
    TimerCalls timers;
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    SUBCASE("removing") {
        icon->RemoveIcon();
    }
    SUBCASE("the owner's release") {
        icon.Reset();
    }
    SUBCASE("the owner's release from within a try") {
        rest->asked = [this] {
            icon->Class_Terminate();
            icon.Reset();
        };
        REQUIRE(PumpUntil([&] { return icon == nullptr; }));
    }
    CHECK_FALSE(timers.AnyRuns());
    PumpFor(80);
    CHECK(Story() == "add rest, delete");
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
        CHECK(Story() == "add rest, delete, delete");
    }
    SUBCASE("when the taskbar is new") {
        SetUp();
        shell.result = removeOnce;
        icon->OnTaskbarCreated();
        CHECK(Story(1) == "add rest, delete, delete");
    }
}
