// The manager that runs for the user already. Asking COM for one would start it where it does not run.
#pragma once

#include <windows.h>

#include "platform/handle.h"

struct ProcessTraits : NullHandleTraits<HANDLE> {
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};
using ProcessHandle = UniqueHandle<ProcessTraits>;

// The process of a manager that runs from the loader's folder and that COM would give to the loader; empty
// when there is none. It can be waited for.
ProcessHandle RunningManager();
