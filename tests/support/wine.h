// Whether this is Wine, and what it does not do by itself.
#pragma once

#include <windows.h>

#include "platform/system_library.h"

// Wine's version, "" on Windows, whose library has no such function.
inline const char* WineVersion() {
    using Version = const char* CDECL();
    auto* const version = FunctionOf<Version>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return version == nullptr ? "" : version();
}

inline bool RunsUnderWine() {
    return *WineVersion() != '\0';
}

// COM itself notices that a server has ended. Wine's does not, and would send every later client to the dead
// one: there its service is stopped and started again.
void ForgetKilledServers();
