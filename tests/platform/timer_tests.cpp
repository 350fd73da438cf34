// Ticks that Windows has put into the queue before KillTimer: it leaves them there.
#include <doctest.h>

#include <memory>

#include "platform/timer.h"
#include "tests/support/import_patch.h"
#include "tests/support/message_pump.h"
#include "tests/support/plain_window.h"

namespace {

struct Set {
    HWND owner;
    UINT_PTR id;
    TIMERPROC procedure;
};
Set set{};

UINT_PTR WINAPI NoteTimer(HWND owner, UINT_PTR id, UINT, TIMERPROC procedure) {
    set = {owner, id, procedure};
    return id;
}

BOOL WINAPI ForgetTimer(HWND, UINT_PTR) {
    return TRUE;
}

struct LateTicks {
    // A message that KillTimer has left in the queue.
    static void Tick(const Set& timer) { timer.procedure(timer.owner, WM_TIMER, timer.id, GetTickCount()); }

    LateTicks() {
        timer->Tick = [this] { ++ticks; };
        timer->Start(window.Hwnd());
    }

    ImportPatch start{"user32.dll", "SetTimer", &NoteTimer};
    ImportPatch stop{"user32.dll", "KillTimer", &ForgetTimer};
    PlainWindow window;
    int ticks = 0;
    std::unique_ptr<Timer> timer = std::make_unique<Timer>(10U);
};

}  // namespace

TEST_CASE_FIXTURE(LateTicks, "a timer that runs ticks") {
    Tick(set);
    Tick(set);
    CHECK(ticks == 2);
}

TEST_CASE_FIXTURE(LateTicks, "a tick that comes behind the stop of its timer is none") {
    timer->Stop();
    Tick(set);
    CHECK(ticks == 0);
}

TEST_CASE_FIXTURE(LateTicks, "a tick of an earlier start is none of the later one") {
    const Set first = set;
    timer->Start(window.Hwnd());
    Tick(first);
    CHECK(ticks == 0);
    Tick(set);
    CHECK(ticks == 1);
}

TEST_CASE_FIXTURE(LateTicks, "a tick that outlives its timer's object touches none") {
    CHECK(set.id != reinterpret_cast<UINT_PTR>(timer.get()));
    timer.reset();
    Tick(set);
    CHECK(ticks == 0);
}
