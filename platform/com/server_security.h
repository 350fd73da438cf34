// Who may call the objects of this process.
#pragma once

#include <windows.h>

// Admits the user that the process runs as, the system and the administrators of the machine, all of them
// from this machine only; anonymous callers and other users are turned away by COM. To be called once, after
// CoInitializeEx and before the first object crosses a process boundary. Returns S_OK, or why the callers
// cannot be told apart: nothing may be served then, since COM's own choice of callers would hold.
HRESULT AdmitOwnUserOnly();
