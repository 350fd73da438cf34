#include "options/speed_levels.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr long kIntervals[] = {2000, 1800, 1600, 1400, 1200,
                               1000, 800,  600,  400,  200};  // of levels 1, 2, ...
constexpr long kUsualLevel = 6;

}  // namespace

long SpeedToInterval(long level) {
    const bool exists = level >= 1 && level <= std::ssize(kIntervals);
    return kIntervals[(exists ? level : kUsualLevel) - 1];
}

long IntervalToSpeed(long interval) {
    const auto found = std::find(std::begin(kIntervals), std::end(kIntervals), interval);
    return found == std::end(kIntervals) ? kUsualLevel
                                         : static_cast<long>(found - std::begin(kIntervals)) + 1;
}
