#include <doctest.h>

#include <climits>
#include <initializer_list>

#include "options/speed_levels.h"

namespace {

struct Pair {
    long level;
    long interval;
};

constexpr Pair kPairs[] = {{1, 2000}, {2, 1800}, {3, 1600}, {4, 1400}, {5, 1200},
                           {6, 1000}, {7, 800},  {8, 600},  {9, 400},  {10, 200}};

}  // namespace

TEST_CASE("each speed level has its polling interval, and the interval its level") {
    for (const Pair& pair : kPairs) {
        CAPTURE(pair.level);
        CHECK(SpeedToInterval(pair.level) == pair.interval);
        CHECK(IntervalToSpeed(pair.interval) == pair.level);
    }
}

TEST_CASE("a level outside 1 to 10 gives 1000 ms") {
    for (const long level : {0L, 11L, -1L, 99L, 1000L, LONG_MAX, LONG_MIN}) {
        CAPTURE(level);
        CHECK(SpeedToInterval(level) == 1000);
    }
}

TEST_CASE("an interval that belongs to no level gives level 6") {
    for (const long interval : {1100L, 0L, -200L, 199L, 201L, 2001L, 2200L, 999L, 1L, LONG_MAX, LONG_MIN}) {
        CAPTURE(interval);
        CHECK(IntervalToSpeed(interval) == 6);
    }
}
