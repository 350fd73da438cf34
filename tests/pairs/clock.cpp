#include "tests/pairs/clock.h"

#include <algorithm>
#include <utility>

namespace {

Clock* current = nullptr;

}  // namespace

Clock::Clock() : m_start("user32.dll", "SetTimer", &Start), m_stop("user32.dll", "KillTimer", &Stop) {
    current = this;
}

Clock::~Clock() {
    current = nullptr;
}

UINT_PTR WINAPI Clock::Start(HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure) {
    if (!IsWindow(owner)) return 0;
    Stop(owner, id);
    current->m_running.push_back({owner, id, interval, procedure});
    return id;
}

BOOL WINAPI Clock::Stop(HWND owner, UINT_PTR id) {
    auto& running = current->m_running;
    const auto found = std::find_if(running.begin(), running.end(),
                                    [&](const Set& timer) { return timer.owner == owner && timer.id == id; });
    if (found == running.end()) return FALSE;
    current->m_stopped.push_back(*found);
    running.erase(found);
    return TRUE;
}

void Clock::Send(const Set& timer) {
    timer.procedure(timer.owner, WM_TIMER, timer.id, GetTickCount());
}

size_t Clock::Tick(UINT interval) {
    const std::vector<Set> running = m_running;
    size_t ticks = 0;
    for (const Set& timer : running) {
        if (interval != 0 && timer.interval != interval) continue;
        // A timer goes with its window.
        if (!IsWindow(timer.owner)) continue;
        Send(timer);
        ++ticks;
    }
    return ticks;
}

void Clock::TickLate() {
    const auto stopped = std::exchange(m_stopped, {});
    for (const Set& timer : stopped)
        Send(timer);
}

size_t Clock::Running() const {
    return static_cast<size_t>(std::count_if(
        m_running.begin(), m_running.end(), [](const Set& timer) { return IsWindow(timer.owner) != FALSE; }));
}
