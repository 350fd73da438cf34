#include <doctest.h>

#include "tests/pairs/table.h"

TEST_CASE("whatever comes in while the window is made breaks nothing") {
    RunRows([](const OutgoingCall& row) { return row.IsStart(); });
}
