// Timers that tick when the test says so.
#pragma once

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time.
class Clock {
public:
    Clock() { s_current = this; }
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    ~Clock() { s_current = nullptr; }

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

    static UINT_PTR WINAPI Start(HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure) {
        if (!IsWindow(owner)) return 0;
        Stop(owner, id);
        s_current->m_running.push_back({owner, id, interval, procedure});
        return id;
    }

    static BOOL WINAPI Stop(HWND owner, UINT_PTR id) {
        auto& running = s_current->m_running;
        const auto found = std::ranges::find_if(
            running, [&](const Timer& timer) { return timer.owner == owner && timer.id == id; });
        if (found == running.end()) return FALSE;
        s_current->m_stopped.push_back(*found);
        running.erase(found);
        return TRUE;
    }

    static inline Clock* s_current = nullptr;
    std::vector<Timer> m_running;
    std::vector<Timer> m_stopped;
    const ImportPatch m_start{"user32.dll", "SetTimer", &Start};
    const ImportPatch m_stop{"user32.dll", "KillTimer", &Stop};
};
