// Crashes of a program on which a test waits.
#pragma once

#include <windows.h>

// From now on this process is the one that is watched.
void WatchForCrash(DWORD process);

// For the next test case.
void ForgetCrash();

// Whether the watched process has crashed, which fails the test: nothing more comes of it.
bool HasCrashed();
