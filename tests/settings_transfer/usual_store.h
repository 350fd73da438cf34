// A store and a window that differ in everything.
#pragma once

#include "tests/support/registry_calls.h"
#include "tests/support/window_state.h"

// Every setting, three entries in each list, and a neighbour of the Run value. No text is so short that a
// string object keeps it within itself.
RegistryContents UsualStore();

// Differs from it in everything; its lists are shorter.
WindowState EditedWindow();
