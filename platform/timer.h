// A timer that ticks through the message queue of the thread that started it.
#pragma once

#include <windows.h>

#include "platform/callback.h"

class Timer {
public:
    explicit Timer(UINT milliseconds) : m_interval(milliseconds) {}
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() { Stop(); }

    // Raised once per period. The listener may stop, restart or destroy the timer.
    Event Tick;

    // In milliseconds; takes effect with the next Start.
    void Interval(UINT milliseconds) noexcept { m_interval = milliseconds; }

    // Ticks until Stop, or until owner's window is destroyed; owner may be null. A running timer starts its
    // period again.
    void Start(HWND owner) noexcept;

    // No tick is raised from here on, even where one is in the queue already.
    void Stop() noexcept;
    bool Running() const noexcept { return m_id != 0; }

private:
    static void CALLBACK Procedure(HWND owner, UINT message, UINT_PTR id, DWORD time);

    static Timer* s_running;

    UINT m_interval;
    HWND m_owner = nullptr;
    UINT_PTR m_id = 0;
    Timer* m_next = nullptr;
};
