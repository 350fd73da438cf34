#include <doctest.h>

#include "tests/pairs/pairs.h"

TEST_CASE("whatever comes in while the engine is called breaks nothing") {
    RunRows([](const OutgoingCall& row) { return row.IsEngine() && !row.IsStart() && !row.IsUnload(); });
}

TEST_CASE("whatever comes in while the shell, a picture or the user is waited for breaks nothing") {
    RunRows([](const OutgoingCall& row) { return !row.IsEngine() && !row.IsStart() && !row.IsUnload(); });
}
