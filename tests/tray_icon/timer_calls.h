// Stands before SetTimer: keeps the periods asked for, and makes each timer a quick one.
#pragma once

#include <windows.h>

#include <vector>

#include "tests/support/import_patch.h"

// One at a time.
class TimerCalls {
public:
    TimerCalls() { s_current = this; }
    ~TimerCalls() { s_current = nullptr; }

    std::vector<UINT> periods;

    // Whether a timer that was set still runs; it does not any more afterwards.
    bool AnyRuns() const {
        bool any = false;
        for (const auto& [hwnd, id] : m_timers) {
            if (KillTimer(hwnd, id) != FALSE) any = true;
        }
        return any;
    }

private:
    struct Set {
        HWND hwnd;
        UINT_PTR id;
    };

    static UINT_PTR WINAPI Fake(HWND hwnd, UINT_PTR id, UINT period, TIMERPROC procedure) {
        s_current->periods.push_back(period);
        s_current->m_timers.push_back({hwnd, id});
        return s_current->m_patch.Original<decltype(&Fake)>()(hwnd, id, 10, procedure);
    }

    static inline TimerCalls* s_current = nullptr;
    std::vector<Set> m_timers;
    const ImportPatch m_patch{"user32.dll", "SetTimer", &Fake};
};
