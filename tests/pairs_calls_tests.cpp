#include <doctest.h>

#include "tests/pairs/pairs.h"

TEST_CASE(
    "whatever comes in while the engine, the shell, a picture or the user is waited for breaks nothing") {
    RunRows([](const OutgoingCall& row) { return !row.IsStart() && !row.IsUnload(); });
}
