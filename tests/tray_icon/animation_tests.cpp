#include <doctest.h>

#include <utility>

#include "tests/support/error_of.h"
#include "tests/tray_icon/tray_icon_fixture.h"

TEST_CASE(
    "an animation is one pass through its pictures, one an interval, the last of which is never shown; then "
    "the resting icon is added again, all with the tip that was set since the first add; the caller's array "
    "is left alone, and nothing holds a picture any longer") {
    struct Row {
        std::string what;
        LONG upperBound;
        std::vector<LONG> filled;
        LONG picsPerCycle;
        std::string run;
    };
    const Row rows[] = {
        {"whatever its pictures per cycle", 3, {0, 1, 2}, 7, kRun},
        {"the last slot is filled", 3, {0, 1, 2, 3}, 1, kRun},
        {"a single picture: the first tick restores the resting icon", 0, {0}, 1, "delete, add rest"},
        {"an empty slot before the last ends it with the resting icon", 3, {0, 2}, 1, "0; delete, add rest"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        TickingIcon tray;
        tray.SetUp();
        PictureArray pictures(0, row.upperBound);
        for (const LONG slot : row.filled)
            pictures.Item(slot, tray.frames[static_cast<size_t>(slot)].Get());
        REQUIRE(tray.icon->AnimateIcon(pictures.Reference(), kInterval, row.picsPerCycle,
                                       tray.window.Number()) == S_OK);
        CHECK(tray.icon->Animating());
        CHECK(tray.Story() == "add rest");
        CHECK(tray.RunToEnd() == row.run);
        CHECK_FALSE(tray.icon->Animating());
        for (size_t call = 1; call < tray.shell.calls.size(); ++call) {
            if (tray.shell.calls[call].action != NIM_DELETE) CHECK(tray.shell.calls[call].Tip() == kTipBytes);
        }
        CHECK(pictures.UpperBound() == row.upperBound);
        CHECK(pictures.Item(0).Get() == tray.frames[0].Get());
        pictures.Clear();
        CHECK(tray.HasFramesAlone());
    }
}

TEST_CASE("a start while an animation runs begins with frame 0 and a fresh timer") {
    struct Row {
        std::string what;
        bool isWithinTick;
        HRESULT result;  // of the picture whose tick it is
    };
    for (const Row& row : {Row{"between two ticks", false, S_OK}, Row{"within a tick", true, S_OK},
                           Row{"within a tick that fails", true, RPC_E_DISCONNECTED}}) {
        CAPTURE(row.what);
        TickingIcon tray;
        tray.SetUp();
        tray.frames[0]->asked = [&, isFirst = row.isWithinTick]() mutable {
            tray.frames[0]->result = isFirst ? row.result : S_OK;
            if (std::exchange(isFirst, false)) REQUIRE(tray.Animate() == S_OK);
        };
        REQUIRE(tray.Animate() == S_OK);
        CHECK(tray.clock.Tick(kInterval) == 1);
        if (!row.isWithinTick) REQUIRE(tray.Animate() == S_OK);
        CHECK(tray.Story() == (row.isWithinTick ? "add rest" : "add rest, 0"));
        CHECK(tray.RunToEnd() == kRun);
        CHECK(tray.HasFramesAlone());
    }
}

TEST_CASE_FIXTURE(
    TickingIcon,
    "without an icon, or removed meanwhile, an animation shows no frames; a removed icon comes back at the "
    "end, as before the next animation") {
    int asked = 0;
    for (const auto& frame : frames)
        frame->asked = [&] { ++asked; };
    icon->InitShellNotify(window.Number(), 1025);
    REQUIRE(Animate() == S_OK);
    CHECK(RunToEnd().empty());
    SetUp();
    REQUIRE(Animate() == S_OK);
    icon->RemoveIcon();
    CHECK(RunToEnd() == "add rest");
    CHECK(asked == 0);
    REQUIRE(Animate() == S_OK);
    CHECK(RunToEnd() == kRun);
}

TEST_CASE_FIXTURE(TickingIcon, "the owner's release during an animation stops it and its timer") {
    SetUp();
    SUBCASE("between two ticks") {
        REQUIRE(Animate() == S_OK);
        icon->Class_Terminate();
        CHECK_FALSE(icon->Animating());
    }
    SUBCASE("of 0 pictures per cycle") {
        REQUIRE(Animate(Slots(), 0) == S_OK);
        icon->Class_Terminate();
    }
    SUBCASE("within a tick") {
        frames[0]->asked = [this] {
            icon->Class_Terminate();
            icon.Reset();
        };
        REQUIRE(Animate() == S_OK);
        CHECK(clock.Tick(kInterval) == 1);
    }
    CHECK_FALSE(clock.AnyRuns());
    CHECK(Story() == "add rest, delete");
    CHECK(HasFramesAlone());
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(TickingIcon, "frames that start at 1 fail on the first tick, and the animation ends") {
    SetUp();
    PictureArray pictures(1, 3);
    for (LONG i = 1; i <= 3; ++i)
        pictures.Item(i, frames[static_cast<size_t>(i)].Get());
    REQUIRE(Animate(std::move(pictures)) == S_OK);
    CHECK(ErrorOf([&] { icon->m_tmrAni_TimerFired(0); }) == HresultOf(ErrorNumber::SubscriptOutOfRange));
    CHECK_FALSE(clock.AnyRuns());
    CHECK(Story() == "add rest, delete, add rest");
    CHECK(HasFramesAlone());
}

TEST_CASE_FIXTURE(TickingIcon,
                  "an animation needs an array of objects with one dimension, else a running one goes on") {
    SetUp();
    REQUIRE(Animate() == S_OK);
    CHECK(icon->AnimateIcon(nullptr, 10, 1, window.Number()) == E_POINTER);

    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    const std::pair<SAFEARRAY*, ErrorNumber> refused[] = {
        {nullptr, ErrorNumber::SubscriptOutOfRange},
        {SafeArrayCreateVector(VT_I4, 0, 4), ErrorNumber::TypeMismatch},
        {SafeArrayCreate(VT_DISPATCH, 2, bounds), ErrorNumber::SubscriptOutOfRange}};
    for (auto [pictures, error] : refused) {
        CHECK(icon->AnimateIcon(&pictures, 10, 1, window.Number()) == HresultOf(error));
        SafeArrayDestroy(pictures);
    }
    CHECK(RunToEnd() == kRun);
}

TEST_CASE_FIXTURE(TickingIcon, "an animation ticks only while its owner's window is there") {
    PlainWindow owner;
    SetUp();
    PictureArray pictures = Slots();
    REQUIRE(icon->AnimateIcon(pictures.Reference(), kInterval, 1, owner.Number()) == S_OK);
    CHECK(clock.AnyRuns());
    owner.Destroy();
    CHECK_FALSE(clock.AnyRuns());
}
