#include <doctest.h>

#include "tests/pairs/pairs.h"

TEST_CASE("whatever comes in while the window is made breaks nothing") {
    RunRows([](const OutgoingCall& row) { return row.IsStart(); });
}
