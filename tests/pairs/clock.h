// Timers that tick when the test says so.
#pragma once

#include <windows.h>

#include <vector>

#include "tests/support/import_patch.h"

// One at a time.
class Clock {
public:
    Clock();
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    ~Clock();

    // Lets each running timer of this interval tick once; any interval where it is 0. Returns how many did.
    // The message goes through the queue's own way to the procedure.
    size_t Tick(UINT interval = 0);

    // Lets each timer tick once more that has been stopped since, as a message does that was in the queue by
    // then.
    void TickLate();

    size_t Running() const;

private:
    struct Set {
        HWND owner;
        UINT_PTR id;
        UINT interval;
        TIMERPROC procedure;
    };

    static UINT_PTR WINAPI Start(HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure);
    static BOOL WINAPI Stop(HWND owner, UINT_PTR id);
    static void Send(const Set& timer);

    std::vector<Set> m_running;
    std::vector<Set> m_stopped;
    const ImportPatch m_start;
    const ImportPatch m_stop;
};
