// The scanning speed: the user sees levels from 1 to 10 (fastest), the engine a polling interval in
// milliseconds.
#pragma once

// A level that does not exist gives the interval of the usual level.
long SpeedToInterval(long level);

// An interval between the levels, or beyond them, counts as the usual one: level 6.
long IntervalToSpeed(long interval);
