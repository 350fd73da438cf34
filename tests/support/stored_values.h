// The values of a key of the real registry, as the registry in memory has them.
#pragma once

#include <windows.h>

#include "tests/support/memory_registry.h"

StoredKey ValuesIn(HKEY key);
