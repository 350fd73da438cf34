#include <doctest.h>

#include <utility>

#include "tests/support/error_of.h"
#include "tests/tray_icon/timer_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

// A tick comes late when the machine is busy, but never earlier than this much before its time.
constexpr DWORD kEarly = 20;

}  // namespace

TEST_CASE_FIXTURE(
    TrayIconFixture,
    "frames 0, 1 and 2 come 250 ms apart, and a second after the start the resting icon is added again") {
    SetUp();
    const DWORD start = GetTickCount();
    REQUIRE(Animate(250) == S_OK);
    CHECK(icon->Animating());
    CHECK(shell.calls.size() == 1);
    REQUIRE(Asked(6));

    CHECK(Story() == "add rest, " + kRun);
    for (size_t tick = 1; tick <= 4; ++tick) {
        CAPTURE(tick);
        CHECK(shell.calls[tick].time - start >= tick * 250 - kEarly);
    }
    CHECK(shell.calls[4].record == shell.calls[3].record);
    CHECK(shell.calls[5].Tip() == kTipBytes);
    CHECK_FALSE(icon->Animating());
}

TEST_CASE("an animation is one pass through its pictures, the last of which is never shown") {
    struct Row {
        std::string what;
        LONG upperBound;
        std::vector<LONG> filled;
        LONG picsPerCycle;
        std::string story;
    };
    const Row rows[] = {
        {"whatever its pictures per cycle", 3, {0, 1, 2}, 7, kRun},
        {"the last slot is filled", 3, {0, 1, 2, 3}, 1, kRun},
        {"a single picture: the first tick restores the resting icon", 0, {0}, 1, "delete, add rest"},
        {"an empty slot before the last ends it with the resting icon", 3, {0, 2}, 1, "0, delete, add rest"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        TrayIconFixture tray;
        tray.SetUp();
        PictureArray pictures(0, row.upperBound);
        for (const LONG slot : row.filled)
            pictures.Item(slot, tray.frames[static_cast<size_t>(slot)].Get());
        REQUIRE(tray.icon->AnimateIcon(pictures.Reference(), 10, row.picsPerCycle, tray.window.Number()) ==
                S_OK);
        REQUIRE(tray.Ends());
        PumpFor(60);
        CHECK(tray.Story() == "add rest, " + row.story);
    }
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the frames are copied: the caller's array is not changed, and the copies go at the end") {
    SetUp();
    PictureArray pictures = Slots();
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10, 1, window.Number()) == S_OK);
    CHECK(frames[0]->References() == 3);
    CHECK(frames[2]->References() == 3);
    REQUIRE(Ends());
    CHECK(pictures.LowerBound() == 0);
    CHECK(pictures.UpperBound() == 3);
    CHECK(pictures.Item(1).Get() == frames[1].Get());
    CHECK(pictures.Item(3) == nullptr);
    pictures.Clear();
    for (const auto& frame : frames)
        CHECK(frame->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "a second start 300 ms into an animation begins again with frame 0") {
    SetUp();
    REQUIRE(Animate(250) == S_OK);
    REQUIRE(Asked(2));
    PumpFor(50);
    const DWORD restart = GetTickCount();
    REQUIRE(Animate(250) == S_OK);
    REQUIRE(Asked(7));
    PumpFor(300);
    CHECK(Story(2) == kRun);
    // A fresh timer: not the rest of the first one's period.
    CHECK(shell.calls[2].time - restart >= 250 - kEarly);
    for (const auto& frame : frames)
        CHECK(frame->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation that has ended ticks no more and can be started again") {
    TimerCalls timers;
    SetUp();
    for (int run = 0; run < 2; ++run) {
        shell.calls.clear();
        REQUIRE(Animate(10) == S_OK);
        REQUIRE(Ends());
        CHECK(Story() == kRun);
    }
    CHECK_FALSE(timers.AnyRuns());
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "an icon that is removed meanwhile shows no frames and comes back at the end") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    icon->RemoveIcon();
    int asked = 0;
    for (const auto& frame : frames)
        frame->asked = [&] { ++asked; };
    REQUIRE(Ends());
    CHECK(asked == 0);
    CHECK(Story() == "add rest, delete, add rest");
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation without any icon shows none and ends") {
    icon->InitShellNotify(window.Number(), 1025);
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(Ends());
    CHECK(shell.calls.empty());
}

TEST_CASE("the owner's release during an animation, of 0 pictures per cycle too, stops it and its timer") {
    for (const LONG picsPerCycle : {1, 0}) {
        CAPTURE(picsPerCycle);
        TimerCalls timers;
        TrayIconFixture tray;
        tray.SetUp();
        REQUIRE(tray.Animate(250, 3, picsPerCycle) == S_OK);
        tray.icon->Class_Terminate();
        CHECK_FALSE(tray.icon->Animating());
        CHECK(timers.periods == std::vector<UINT>{250});
        CHECK_FALSE(timers.AnyRuns());
        for (const auto& frame : tray.frames)
            CHECK(frame->References() == 1);
        CHECK(tray.rest->References() == 1);
        PumpFor(60);
        CHECK(tray.Story() == "add rest, delete");
    }
}

TEST_CASE_FIXTURE(TrayIconFixture, "the owner's release from within a tick is survived") {
    SetUp();
    frames[1]->asked = [this] {
        icon->Class_Terminate();
        icon.Reset();
    };
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return icon == nullptr; }));
    PumpFor(60);
    CHECK(Story() == "add rest, 0, delete");
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "frames that start at 1 fail on the first tick, and the animation ends") {
    SetUp();
    PictureArray pictures(1, 3);
    for (LONG i = 1; i <= 3; ++i)
        pictures.Item(i, frames[static_cast<size_t>(i)].Get());
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10000, 1, window.Number()) == S_OK);
    CHECK(ErrorOf([&] { icon->m_tmrAni_TimerFired(0); }) == HresultOf(ErrorNumber::SubscriptOutOfRange));
    CHECK_FALSE(icon->Animating());
    CHECK(Story() == "add rest, delete, add rest");
    pictures.Clear();
    CHECK(frames[1]->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "an animation needs an array of objects with one dimension, else a running one goes on") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
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
    REQUIRE(Ends());
    CHECK(Story() == "add rest, " + kRun);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation ticks only while its owner's window is there") {
    PlainWindow owner;
    SetUp();
    PictureArray pictures = Slots();
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10, 1, 0) == S_OK);
    PumpFor(100);
    CHECK(shell.calls.size() == 1);
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 30, 1, owner.Number()) == S_OK);
    owner.Destroy();
    PumpFor(120);
    CHECK(shell.calls.size() == 1);
}

TEST_CASE(
    "a start from within a tick begins with frame 0 and a fresh timer, and a failure there ends nothing") {
    for (const HRESULT result : {S_OK, RPC_E_DISCONNECTED}) {
        CAPTURE(result);
        TimerCalls timers;
        TrayIconFixture tray;
        tray.SetUp();
        tray.frames[0]->asked = [&, isFirst = true]() mutable {
            tray.frames[0]->result = isFirst ? result : S_OK;
            if (std::exchange(isFirst, false)) REQUIRE(tray.Animate(10) == S_OK);
        };
        REQUIRE(tray.Animate(10) == S_OK);
        REQUIRE(tray.Asked(2));
        REQUIRE(tray.Ends());
        CHECK(timers.periods.size() == 2);
        CHECK(tray.Story(1) == kRun);
    }
}
