// An icon that the shell refuses, and a taskbar that is new.
#include <doctest.h>

#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

constexpr UINT kTryInterval = 2000;

}  // namespace

TEST_CASE_FIXTURE(TickingIcon,
                  "a new taskbar gets an added icon again, once, with the current tip, and an animation goes "
                  "on across it") {
    icon->OnTaskbarCreated();
    SetUp();
    REQUIRE(Animate() == S_OK);
    clock.Tick(kInterval);
    icon->OnTaskbarCreated();
    CHECK(Story() == "add rest, 0, add rest");
    CHECK(RunToEnd() == "1; 2; delete, add rest");
    SetTip(L"Calvane");
    icon->OnTaskbarCreated();
    CHECK(Story(5) == "delete, add rest, add rest");
    CHECK(shell.calls.back().Tip().starts_with(std::string("Calvane\0", 8)));
    icon->RemoveIcon();
    icon->OnTaskbarCreated();
    CHECK(Story(7) == "add rest, delete");
    CHECK_FALSE(clock.AnyRuns());
}

TEST_CASE_FIXTURE(
    TickingIcon,
    "a new taskbar does not bring back an icon that is being removed, nor one that its owner lets "
    "go of while it is prepared") {
    SetUp();
    SUBCASE("is being removed") {
        shell.result = [this](DWORD action) {
            if (action == NIM_DELETE) icon->OnTaskbarCreated();
            return TRUE;
        };
        icon->Class_Terminate();
    }
    SUBCASE("its owner lets go of") {
        bool isGone = false;
        rest->gone = [&] { isGone = true; };
        rest->asked = [&] {
            icon->Class_Terminate();
            // The picture lives while it is asked.
            CHECK_FALSE(isGone);
        };
        rest.Reset();
        icon->OnTaskbarCreated();
        CHECK(isGone);
    }
    CHECK(Story() == "add rest, delete");
}

TEST_CASE("a refused add is tried again every two seconds, for half a minute, until the shell has the icon") {
    struct Row {
        std::string what;
        BOOL (*shell)(DWORD action, size_t call);  // counted from 1
        std::string tries;
        bool isNew = false;  // the taskbar, once the icon was added
    };
    std::string fifteen = "rest, add rest";
    for (int i = 1; i < 15; ++i)
        fifteen += "; rest, add rest";
    const Row rows[] = {
        {"taken at once", [](DWORD, size_t) { return TRUE; }, ""},
        {"taken at the third try",
         [](DWORD action, size_t call) -> BOOL { return action == NIM_ADD && call == 7; },
         "rest, add rest; rest, add rest; rest, add rest"},
        {"taken without saying so, and not added twice",
         [](DWORD action, size_t) -> BOOL { return action == NIM_MODIFY; }, "rest"},
        {"refused for good", [](DWORD, size_t) { return FALSE; }, fifteen},
        {"refused by a new taskbar", [](DWORD, size_t call) -> BOOL { return call == 1 || call == 4; },
         "rest, add rest", true},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        TickingIcon tray;
        tray.shell.result = [&](DWORD action) { return row.shell(action, tray.shell.calls.size()); };
        tray.SetUp();
        if (row.isNew) tray.icon->OnTaskbarCreated();
        CHECK(tray.Story() == (row.isNew ? "add rest, add rest" : "add rest"));
        CHECK(tray.RunToEnd(kTryInterval) == row.tries);
        if (!row.tries.empty()) CHECK(tray.shell.calls.back().Tip() == kTipBytes);
    }
}

TEST_CASE_FIXTURE(TickingIcon, "removing a refused icon, and the owner's release, end the tries") {
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
        clock.Tick(kTryInterval);
    }
    CHECK_FALSE(clock.AnyRuns());
    CHECK(Story() == "add rest, delete");
}

TEST_CASE_FIXTURE(TickingIcon, "an icon that is removed before the shell has taken it does not stay") {
    const auto remove = [this](DWORD action) {
        if (action == NIM_ADD) icon->RemoveIcon();
        return TRUE;
    };
    SUBCASE("when it is added") {
        shell.result = remove;
        SetUp();
        CHECK(Story() == "add rest, delete, delete");
    }
    SUBCASE("when the taskbar is new") {
        SetUp();
        shell.result = remove;
        icon->OnTaskbarCreated();
        CHECK(Story(1) == "add rest, delete, delete");
    }
}
