#include "platform/timer.h"

#include "platform/guard.h"

namespace {

// Far above the numbers that controls give the timers on their own windows.
UINT_PTR lastId = 0x43560000;

}  // namespace

// KillTimer leaves a WM_TIMER that is in the queue where it is. The procedure therefore looks whether the
// timer still runs; each start has a number of its own, so that a tick of the start before does not count.
Timer* Timer::s_running = nullptr;

void Timer::Start(HWND owner) noexcept {
    Stop();
    // Windows chooses the number of a timer without a window.
    const UINT_PTR id = owner == nullptr ? 0 : ++lastId;
    const UINT_PTR given = SetTimer(owner, id, m_interval, Procedure);
    if (given == 0) return;
    m_id = owner == nullptr ? given : id;
    m_owner = owner;
    m_next = s_running;
    s_running = this;
}

void Timer::Stop() noexcept {
    if (m_id == 0) return;
    KillTimer(m_owner, m_id);
    m_id = 0;
    Timer** link = &s_running;
    while (*link != this)
        link = &(*link)->m_next;
    *link = m_next;
}

void CALLBACK Timer::Procedure(HWND, UINT, UINT_PTR id, DWORD) {
    Guarded([&] {
        const Timer* timer = s_running;
        while (timer != nullptr && timer->m_id != id)
            timer = timer->m_next;
        if (timer == nullptr) return;
        // The copy outlives a listener that destroys the timer.
        Raise(Event(timer->Tick));
    });
}
