// The timer component that clocks the icon's animation.
#pragma once

#include <windows.h>

#include "platform/timer.h"

class CalvaneTime {
public:
    CalvaneTime();

    // Raised once per period. lngTHandle tells timers apart. The listener may destroy the timer.
    std::function<void(LONG lngTHandle)> TimerFired;

    // The period in milliseconds; takes effect with the next Start.
    void Interval(LONG milliseconds) noexcept { m_timer.Interval(static_cast<UINT>(milliseconds)); }

    // Fires until Stop, or until owner is destroyed; owner is a window of this thread, with any other the
    // timer does not fire.
    void Start(HWND owner) noexcept {
        if (owner != nullptr) m_timer.Start(owner);
    }
    void Stop() noexcept { m_timer.Stop(); }
    bool Running() const noexcept { return m_timer.Running(); }

private:
    Timer m_timer;
};
