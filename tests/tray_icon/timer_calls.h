// Stands before SetTimer: keeps the periods asked for, and makes each timer a quick one.
#pragma once

#include <windows.h>

#include <utility>
#include <vector>

#include "tests/support/import_fake.h"

class TimerCalls {
public:
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
    std::vector<std::pair<HWND, UINT_PTR>> m_timers;
    const ImportFake<"SetTimer", decltype(&SetTimer)> m_set{
        "user32.dll", [this](HWND hwnd, UINT_PTR id, UINT period, TIMERPROC procedure) {
            periods.push_back(period);
            m_timers.emplace_back(hwnd, id);
            return m_set.Original(hwnd, id, 10, procedure);
        }};
};
