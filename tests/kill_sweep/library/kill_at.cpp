// A library for the manager's process: ends it by force before a registry call that changes the store. The
// environment variable KILL_SWEEP_CALL holds the number of that call, counted from 1; nothing happens without
// it.
#include <windows.h>

#include <cstdlib>
#include <cstring>

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

template <class Function>
Function Replace(void** slot, Function replacement) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &protection);
    const auto original = reinterpret_cast<Function>(*slot);
    *slot = reinterpret_cast<void*>(replacement);
    VirtualProtect(slot, sizeof(void*), protection, &protection);
    return original;
}

void PatchImports() {
    auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0;
         ++entry) {
        auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
        auto* slot = reinterpret_cast<void**>(base + entry->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* const import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            const auto* const text = reinterpret_cast<const char*>(import->Name);
            if (std::strcmp(text, "RegSetValueExA") == 0) setValue = Replace(slot, &SetValue);
            if (std::strcmp(text, "RegDeleteValueA") == 0) deleteValue = Replace(slot, &DeleteValue);
        }
    }
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    char text[16]{};
    if (GetEnvironmentVariableA("KILL_SWEEP_CALL", text, sizeof(text)) == 0) return TRUE;
    callsLeft = std::atol(text);
    PatchImports();
    return TRUE;
}
