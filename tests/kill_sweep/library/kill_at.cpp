// A library for the manager's process: ends it by force before a registry call that changes the store. The
// environment variable KILL_AT holds the number of that call, counted from 1; nothing happens without it.
#include <windows.h>

#include <cstdlib>

#include "tests/support/import_patch.h"

namespace {

constexpr UINT kKilled = 77;

long callsLeft = 0;

void Count() {
    if (--callsLeft == 0) TerminateProcess(GetCurrentProcess(), kKilled);
}

// Both stay until the process ends.
const ImportPatch* set = nullptr;
const ImportPatch* remove = nullptr;

LSTATUS WINAPI SetValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    Count();
    return set->Original<decltype(&RegSetValueExA)>()(key, name, reserved, type, data, size);
}

LSTATUS WINAPI DeleteValue(HKEY key, LPCSTR name) {
    Count();
    return remove->Original<decltype(&RegDeleteValueA)>()(key, name);
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    char text[16]{};
    if (reason != DLL_PROCESS_ATTACH || GetEnvironmentVariableA("KILL_AT", text, sizeof(text)) == 0)
        return TRUE;
    callsLeft = std::atol(text);
    set = new ImportPatch("advapi32.dll", "RegSetValueExA", &SetValue);
    remove = new ImportPatch("advapi32.dll", "RegDeleteValueA", &DeleteValue);
    return TRUE;
}
