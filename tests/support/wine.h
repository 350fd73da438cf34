// Whether this is Wine.
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
