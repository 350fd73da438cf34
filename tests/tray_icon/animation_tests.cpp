#include <doctest.h>

#include <utility>

#include "tests/support/error_of.h"
#include "tests/tray_icon/timer_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"

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
        // A tick comes late when the machine is busy, but hardly before its time.
        CHECK(shell.calls[tick].time - start >= tick * 250 - 20);
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
    CHECK(HasFramesAlone());
}

TEST_CASE(
    "a start while an animation runs begins with frame 0 and a fresh timer; one that has ended ticks no "
    "more") {
    struct Row {
        std::string what;
        bool isWithinTick;
        HRESULT result;  // of the picture whose tick it is
    };
    for (const Row& row : {Row{"between two ticks", false, S_OK}, Row{"within a tick", true, S_OK},
                           Row{"within a tick that fails", true, RPC_E_DISCONNECTED}}) {
        CAPTURE(row.what);
        TimerCalls timers;
        TrayIconFixture tray;
        tray.SetUp();
        tray.frames[0]->asked = [&, isFirst = row.isWithinTick]() mutable {
            tray.frames[0]->result = isFirst ? row.result : S_OK;
            if (std::exchange(isFirst, false)) REQUIRE(tray.Animate(250) == S_OK);
        };
        REQUIRE(tray.Animate(250) == S_OK);
        REQUIRE(tray.Asked(2));
        if (!row.isWithinTick) REQUIRE(tray.Animate(250) == S_OK);
        REQUIRE(tray.Ends());
        CHECK(tray.Story() == (row.isWithinTick ? "add rest, " : "add rest, 0, ") + kRun);
        CHECK(timers.periods == std::vector<UINT>(2, 250));
        CHECK_FALSE(timers.AnyRuns());
        CHECK(tray.HasFramesAlone());
    }
}

TEST_CASE_FIXTURE(
    TrayIconFixture,
    "without an icon, or removed meanwhile, an animation shows no frames; a removed icon comes back at the "
    "end, as before the next animation") {
    int asked = 0;
    for (const auto& frame : frames)
        frame->asked = [&] { ++asked; };
    icon->InitShellNotify(window.Number(), 1025);
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(Ends());
    CHECK(shell.calls.empty());
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    icon->RemoveIcon();
    REQUIRE(Ends());
    CHECK(asked == 0);
    REQUIRE(Animate(20) == S_OK);
    REQUIRE(Ends());
    CHECK(Story() == "add rest, delete, add rest, " + kRun);
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
        CHECK(tray.HasFramesAlone());
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
