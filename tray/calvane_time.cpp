#include "tray/calvane_time.h"

namespace {

constexpr UINT kDefaultInterval = 1000;

}  // namespace

CalvaneTime::CalvaneTime() : m_timer(kDefaultInterval) {
    m_timer.Tick = [this] {
        // The copy outlives a listener that destroys the timer.
        Raise(std::function(TimerFired), PtrToLong(this));
    };
}
