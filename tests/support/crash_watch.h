// Notices that the program under test has crashed, while a test waits for it.
#pragma once

#include <windows.h>

// From now on this process is the one that is watched; none is where it is 0.
void WatchForCrash(DWORD process);

// Whether the watched process has crashed, which fails the test: nothing more comes of it.
bool HasCrashed();
