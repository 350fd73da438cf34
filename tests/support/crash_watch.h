// Crashes: of a program on which a test waits, and of the suite itself.
#pragma once

#include <windows.h>

// From now on this process is the one that is watched.
void WatchForCrash(DWORD process);

// For the next test case.
void ForgetCrash();

// Whether the watched process has crashed, which fails the test: nothing more comes of it.
bool HasCrashed();

// A fault in the suite's own code, or a call to no code at all, ends the program at once and names the test
// case. Windows would hand it to the nearest handler first, and that of COM keeps faults in a call to itself:
// the caller would see an error, or wait for ever. Faults in Windows' own code have handlers that expect
// them; those without one end the program likewise.
void EndAtFault();
