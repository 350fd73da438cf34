#include "options/speed_levels.h"

#include <doctest.h>

#include <climits>

TEST_CASE("each speed level has its polling interval, and the interval its level") {
    for (long level = 1; level <= 10; ++level) {
        CAPTURE(level);
        CHECK(SpeedToInterval(level) == 2200 - 200 * level);
        CHECK(IntervalToSpeed(2200 - 200 * level) == level);
    }
}

TEST_CASE("a level outside 1 to 10 gives 1000 ms, an interval of no level gives level 6") {
    for (const long level : {0L, 11L, -1L, 99L, 1000L, LONG_MAX, LONG_MIN})
        CHECK(SpeedToInterval(level) == 1000);
    for (const long interval : {1100L, 0L, -200L, 199L, 201L, 2001L, 2200L, 999L, 1L, LONG_MAX, LONG_MIN})
        CHECK(IntervalToSpeed(interval) == 6);
}
