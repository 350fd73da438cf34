#include <doctest.h>

#include <utility>

#include "platform/automation_error.h"
#include "tests/support/message_pump.h"
#include "tests/tray_icon/timer_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"
#include "tray/bas_shell_notify.h"

namespace {

using Actions = std::vector<DWORD>;

// A tick comes late when the machine is busy, but never earlier than this much before its time.
constexpr DWORD kEarly = 20;

std::vector<DWORD> IconsFrom(const std::vector<ShellCall>& calls, size_t first) {
    std::vector<DWORD> icons;
    for (size_t i = first; i < calls.size(); ++i)
        icons.push_back(calls[i].Icon());
    return icons;
}

LONG HookProcedure() {
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(&TrayWindowProc));
}

}  // namespace

TEST_CASE_FIXTURE(
    TrayIconFixture,
    "frames 0, 1 and 2 come 250 ms apart, and a second after the start the resting icon is added again") {
    SetUp();
    const DWORD start = GetTickCount();
    REQUIRE(Animate(250) == S_OK);
    CHECK(icon->Animating());
    CHECK(shell.calls.size() == 1);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 6; }));

    REQUIRE(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_MODIFY, NIM_MODIFY, NIM_DELETE, NIM_ADD});
    CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{100, 200, 201, 202, 202, 100});
    for (size_t tick = 1; tick <= 4; ++tick) {
        CAPTURE(tick);
        CHECK(shell.calls[tick].time - start >= tick * 250 - kEarly);
    }
    CHECK(shell.calls[4].record == shell.calls[3].record);
    CHECK(shell.calls[5].Tip() == std::string("Calvane Sentrel\0", 16) + std::string(48, ' '));
    CHECK_FALSE(icon->Animating());
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation is one pass, whatever its pictures per cycle") {
    SetUp();
    REQUIRE(Animate(10, 3, 7) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 6; }));
    PumpFor(100);
    CHECK(shell.calls.size() == 6);
}

TEST_CASE_FIXTURE(TrayIconFixture, "the frame with the highest number is never shown") {
    SetUp();
    PictureArray pictures(0, 3);
    for (LONG i = 0; i < 4; ++i)
        pictures.Item(i, frames[static_cast<size_t>(i)].Get());
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10, 1, window.Number()) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 6; }));
    CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{100, 200, 201, 202, 202, 100});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a single frame is never shown: the first tick restores the resting icon") {
    SetUp();
    REQUIRE(Animate(10, 0) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 3; }));
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE, NIM_ADD});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the frames are copied: the caller's array may go, and they are released at the end") {
    SetUp();
    REQUIRE(Animate(10) == S_OK);
    CHECK(frames[0]->References() == 2);
    CHECK(frames[2]->References() == 2);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    for (const auto& frame : frames)
        CHECK(frame->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "the caller's array is not changed") {
    SetUp();
    PictureArray pictures = Slots();
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10, 1, window.Number()) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(pictures.LowerBound() == 0);
    CHECK(pictures.UpperBound() == 3);
    CHECK(pictures.Item(1).Get() == frames[1].Get());
    CHECK(pictures.Item(3) == nullptr);
}

TEST_CASE_FIXTURE(TrayIconFixture, "a second start 300 ms into an animation begins again with frame 0") {
    SetUp();
    REQUIRE(Animate(250) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    PumpFor(50);
    shell.calls.clear();
    const DWORD restart = GetTickCount();
    REQUIRE(Animate(250) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 5; }));
    PumpFor(300);
    CHECK(shell.Actions() == Actions{NIM_MODIFY, NIM_MODIFY, NIM_MODIFY, NIM_DELETE, NIM_ADD});
    CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{200, 201, 202, 202, 100});
    // A fresh timer: not the rest of the first one's period.
    CHECK(shell.calls[0].time - restart >= 250 - kEarly);
    for (const auto& frame : frames)
        CHECK(frame->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation that has ended can be started again") {
    SetUp();
    for (int run = 0; run < 2; ++run) {
        shell.calls.clear();
        REQUIRE(Animate(10) == S_OK);
        REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
        CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{200, 201, 202, 202, 100});
    }
}

TEST_CASE_FIXTURE(TrayIconFixture, "nothing ticks once an animation has ended") {
    TimerCalls timers;
    SetUp();
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    const size_t calls = shell.calls.size();
    CHECK_FALSE(timers.AnyRuns());
    PumpFor(100);
    CHECK(shell.calls.size() == calls);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "an icon that is removed meanwhile shows no frames and comes back at the end") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    icon->RemoveIcon();
    int asked = 0;
    for (const auto& frame : frames)
        frame->asked = [&] { ++asked; };
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(asked == 0);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE, NIM_ADD});
    CHECK(shell.calls.back().Icon() == kRestHandle);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation without any icon shows none and ends") {
    icon->InitShellNotify(window.Number(), 1025);
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(shell.calls.empty());
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "the owner's release during an animation stops it, removes the icon and unhooks") {
    SetUp();
    REQUIRE(Animate(50) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    icon.Reset();
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_DELETE});
    CHECK(window.Procedure() != HookProcedure());
    for (const auto& frame : frames)
        CHECK(frame->References() == 1);
    CHECK(rest->References() == 1);
    PumpFor(150);
    CHECK(shell.calls.size() == 3);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "an animation of 0 pictures per cycle does not outlive the owner's release either") {
    TimerCalls timers;
    SetUp();
    REQUIRE(Animate(50, 3, 0) == S_OK);
    icon->Class_Terminate();
    CHECK_FALSE(icon->Animating());
    CHECK(timers.periods == std::vector<UINT>{50});
    CHECK_FALSE(timers.AnyRuns());
    PumpFor(150);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
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
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_DELETE});
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "frames that start at 1 fail on the first tick, and the animation ends") {
    SetUp();
    PictureArray pictures(1, 3);
    for (LONG i = 1; i <= 3; ++i)
        pictures.Item(i, frames[static_cast<size_t>(i)].Get());
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10000, 1, window.Number()) == S_OK);
    HRESULT error = S_OK;
    try {
        icon->m_tmrAni_TimerFired(0);
    } catch (const AutomationError& failure) {
        error = failure.Code();
    }
    CHECK(error == HresultOf(ErrorNumber::SubscriptOutOfRange));
    CHECK_FALSE(icon->Animating());
    CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{100, 100, 100});
    pictures.Clear();
    CHECK(frames[1]->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an empty slot before the last ends the animation with the resting icon") {
    SetUp();
    PictureArray pictures(0, 3);
    pictures.Item(0, frames[0].Get());
    pictures.Item(2, frames[2].Get());
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 10, 1, window.Number()) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    PumpFor(60);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_DELETE, NIM_ADD});
    CHECK(shell.calls.back().Icon() == kRestHandle);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an array that cannot be used leaves a running animation running") {
    SetUp();
    REQUIRE(Animate(20) == S_OK);
    SAFEARRAY* none = nullptr;
    CHECK(FAILED(icon->AnimateIcon(&none, 20, 1, window.Number())));
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(IconsFrom(shell.calls, 0) == std::vector<DWORD>{100, 200, 201, 202, 202, 100});
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation needs an array of objects with one dimension") {
    SetUp();
    CHECK(icon->AnimateIcon(nullptr, 10, 1, window.Number()) == E_POINTER);

    SAFEARRAY* none = nullptr;
    CHECK(icon->AnimateIcon(&none, 10, 1, window.Number()) == HresultOf(ErrorNumber::SubscriptOutOfRange));

    SAFEARRAY* numbers = SafeArrayCreateVector(VT_I4, 0, 4);
    CHECK(icon->AnimateIcon(&numbers, 10, 1, window.Number()) == HresultOf(ErrorNumber::TypeMismatch));
    SafeArrayDestroy(numbers);

    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    SAFEARRAY* table = SafeArrayCreate(VT_DISPATCH, 2, bounds);
    CHECK(icon->AnimateIcon(&table, 10, 1, window.Number()) == HresultOf(ErrorNumber::SubscriptOutOfRange));
    SafeArrayDestroy(table);

    PumpFor(60);
    CHECK(shell.calls.size() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation without an owner's window does not tick") {
    SetUp();
    PictureArray pictures = Slots();
    CHECK(icon->AnimateIcon(pictures.Reference(), 10, 1, 0) == S_OK);
    PumpFor(100);
    CHECK(shell.calls.size() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation does not outlive its owner's window") {
    PlainWindow owner;
    SetUp();
    PictureArray pictures = Slots();
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 30, 1, owner.Number()) == S_OK);
    owner.Destroy();
    PumpFor(120);
    CHECK(shell.calls.size() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "a start from within a tick begins with frame 0 and a fresh timer") {
    TimerCalls timers;
    SetUp();
    frames[0]->asked = [this, isFirst = true]() mutable {
        if (std::exchange(isFirst, false)) REQUIRE(Animate(10) == S_OK);
    };
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(timers.periods.size() == 2);
    CHECK(IconsFrom(shell.calls, 1) == std::vector<DWORD>{200, 201, 202, 202, 100});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a picture that fails does not end the animation that was started meanwhile") {
    SetUp();
    frames[0]->asked = [this, isFirst = true]() mutable {
        frames[0]->result = isFirst ? RPC_E_DISCONNECTED : S_OK;
        if (std::exchange(isFirst, false)) {
            REQUIRE(Animate(10) == S_OK);
            CHECK(icon->Animating());
        }
    };
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(IconsFrom(shell.calls, 1) == std::vector<DWORD>{200, 201, 202, 202, 100});
}
