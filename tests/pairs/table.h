// The table of all pairs: every call that the manager makes out of its own code, with everything that can
// come in meanwhile, before the reply and behind it.
#pragma once

#include "tests/pairs/outgoing_calls.h"

// Goes through these rows, prints how many pairs passed, and checks that all did.
void RunRows(bool (*isWanted)(const OutgoingCall&));
