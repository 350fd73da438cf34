#include "platform/timer.h"

#include "platform/guard.h"

// The timer's number within its owner is its own address, which is how the procedure finds it again.
void Timer::Start(HWND owner) noexcept {
    Stop();
    // Windows would choose a number of its own for a timer without a window.
    if (owner == nullptr) return;
    if (SetTimer(owner, reinterpret_cast<UINT_PTR>(this), m_interval, Procedure) != 0) m_owner = owner;
}

void Timer::Stop() noexcept {
    if (m_owner == nullptr) return;
    KillTimer(m_owner, reinterpret_cast<UINT_PTR>(this));
    m_owner = nullptr;
}

void CALLBACK Timer::Procedure(HWND, UINT, UINT_PTR id, DWORD) {
    Guarded([&] {
        const auto tick = reinterpret_cast<Timer*>(id)->Tick;
        if (tick) tick();
    });
}
