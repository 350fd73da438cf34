#include "tests/support/wine.h"

#include <windows.h>

#include "platform/system_library.h"

const char* WineVersion() {
    // Windows' library has no such function.
    using Version = const char* CDECL();
    auto* const version = FunctionOf<Version>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return version == nullptr ? "" : version();
}
