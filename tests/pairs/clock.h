// Timers that tick when the test says so.
#pragma once

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tests/support/import_fake.h"

// One at a time.
class Clock {
public:
    // Lets each running timer of this interval tick once; any interval where it is 0. Returns how many did.
    size_t Tick(UINT interval = 0) {
        size_t ticks = 0;
        for (const Timer& timer : std::vector(m_running)) {
            if ((interval != 0 && timer.interval != interval) || !timer.IsThere()) continue;
            timer.Tick();
            ++ticks;
        }
        return ticks;
    }

    // Lets each timer tick once more that has been stopped since, as a message does that was in the queue by
    // then.
    void TickLate() {
        for (const Timer& timer : std::exchange(m_stopped, {}))
            timer.Tick();
    }

    bool AnyRuns() const { return std::ranges::any_of(m_running, &Timer::IsThere); }

private:
    struct Timer {
        HWND owner;
        UINT_PTR id;
        UINT interval;
        TIMERPROC procedure;

        // It goes with its window.
        bool IsThere() const { return IsWindow(owner) != FALSE; }
        void Tick() const { procedure(owner, WM_TIMER, id, GetTickCount()); }
    };

    BOOL Stop(HWND owner, UINT_PTR id) {
        const auto found = std::ranges::find_if(
            m_running, [&](const Timer& timer) { return timer.owner == owner && timer.id == id; });
        if (found == m_running.end()) return FALSE;
        m_stopped.push_back(*found);
        m_running.erase(found);
        return TRUE;
    }

    std::vector<Timer> m_running;
    std::vector<Timer> m_stopped;
    const ImportFake<"SetTimer", decltype(&SetTimer)> m_set{
        "user32.dll", [this](HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure) -> UINT_PTR {
            if (!IsWindow(owner)) return 0;
            Stop(owner, id);
            m_running.push_back({owner, id, interval, procedure});
            return id;
        }};
    const ImportFake<"KillTimer", decltype(&KillTimer)> m_kill{
        "user32.dll", [this](HWND owner, UINT_PTR id) { return Stop(owner, id); }};
};
