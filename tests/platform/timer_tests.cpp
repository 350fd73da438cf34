// Ticks that Windows has put into the queue before KillTimer: it leaves them there.
#include <doctest.h>

#include <functional>
#include <memory>

#include "platform/timer.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_window.h"

namespace {

struct LateTicks {
    LateTicks() {
        timer->Tick = [this] { ++ticks; };
        timer->Start(window.Hwnd());
    }

    // Ticks as the last start wants it; KillTimer leaves such a message in the queue.
    std::function<void()> tick;
    UINT_PTR id = 0;
    const ImportFake<"SetTimer", decltype(&SetTimer)> start{
        "user32.dll", [this](HWND owner, UINT_PTR itsId, UINT, TIMERPROC procedure) {
            tick = [=] { procedure(owner, WM_TIMER, itsId, GetTickCount()); };
            return id = itsId;
        }};
    const ImportFake<"KillTimer", decltype(&KillTimer)> stop{"user32.dll",
                                                             [](HWND, UINT_PTR) { return TRUE; }};
    PlainWindow window;
    int ticks = 0;
    std::unique_ptr<Timer> timer = std::make_unique<Timer>(10U);
};

}  // namespace

TEST_CASE_FIXTURE(LateTicks,
                  "a timer that runs ticks; a tick of an earlier start, or behind a stop, is none") {
    const std::function<void()> first = tick;
    first();
    CHECK(ticks == 1);
    timer->Start(window.Hwnd());
    first();
    CHECK(ticks == 1);
    tick();
    CHECK(ticks == 2);
    timer->Stop();
    tick();
    CHECK(ticks == 2);
}

TEST_CASE_FIXTURE(LateTicks, "a tick that outlives its timer's object touches none") {
    CHECK(id != reinterpret_cast<UINT_PTR>(timer.get()));
    timer.reset();
    tick();
    CHECK(ticks == 0);
}
