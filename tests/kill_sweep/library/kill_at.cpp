// A library for the manager's process: ends it by force before a registry call that changes the store. The
// environment variable KILL_SWEEP_CALL holds the number of that call, counted from 1; nothing happens without
// it.
#include <windows.h>

#include <cstdlib>

#include "tests/support/import_patch.h"

namespace {

constexpr UINT kKilled = 77;

long callsLeft = 0;
decltype(&RegSetValueExA) setValue = nullptr;
decltype(&RegDeleteValueA) deleteValue = nullptr;

void Count() {
    if (--callsLeft == 0) TerminateProcess(GetCurrentProcess(), kKilled);
}

LSTATUS WINAPI SetValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    Count();
    return setValue(key, name, reserved, type, data, size);
}

LSTATUS WINAPI DeleteValue(HKEY key, LPCSTR name) {
    Count();
    return deleteValue(key, name);
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    char text[16]{};
    if (GetEnvironmentVariableA("KILL_SWEEP_CALL", text, sizeof(text)) == 0) return TRUE;
    callsLeft = std::atol(text);
    // Both stay until the process ends.
    static const ImportPatch set("advapi32.dll", "RegSetValueExA", &SetValue);
    setValue = set.Original<decltype(setValue)>();
    static const ImportPatch remove("advapi32.dll", "RegDeleteValueA", &DeleteValue);
    deleteValue = remove.Original<decltype(deleteValue)>();
    return TRUE;
}
