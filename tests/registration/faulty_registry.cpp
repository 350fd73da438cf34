#include "tests/registration/faulty_registry.h"

#include <oleauto.h>

#include "platform/text.h"

namespace {

// Whether an open key lies below HKEY_LOCAL_MACHINE.
bool IsMachineKey(HKEY key) {
    if (key == HKEY_LOCAL_MACHINE) return true;
    struct KeyName {
        ULONG length;
        wchar_t text[1024];
    } name{};
    constexpr ULONG kKeyNameInformation = 3;
    using Query = LONG(WINAPI*)(HANDLE, ULONG, void*, ULONG, ULONG*);
    static const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryKey")));
    ULONG size = 0;
    if (query(key, kKeyNameInformation, &name, sizeof(name), &size) != 0) return false;
    return UpperCase(std::wstring_view(name.text, name.length / sizeof(wchar_t)))
        .starts_with(L"\\REGISTRY\\MACHINE");
}

Faults g_faults;
decltype(&RegCreateKeyExW) g_createKey;
decltype(&RegSetValueExW) g_setValue;
decltype(&RegOpenKeyExW) g_openKey;
decltype(&RegDeleteKeyW) g_deleteKey;
decltype(&RegisterTypeLib) g_registerLibrary;

bool FailsNow() {
    return ++g_faults.calls == g_faults.failAt;
}

LSTATUS WINAPI FaultyCreateKey(HKEY parent, LPCWSTR name, DWORD reserved, LPWSTR className, DWORD options,
                               REGSAM rights, LPSECURITY_ATTRIBUTES security, PHKEY key,
                               LPDWORD disposition) {
    if (g_faults.denyMachine && IsMachineKey(parent)) return ERROR_ACCESS_DENIED;
    if (FailsNow()) return g_faults.failure;
    return g_createKey(parent, name, reserved, className, options, rights, security, key, disposition);
}

LSTATUS WINAPI FaultySetValue(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
    if (g_faults.denyMachine && IsMachineKey(key)) return ERROR_ACCESS_DENIED;
    if (FailsNow()) return g_faults.failure;
    return g_setValue(key, name, reserved, type, data, size);
}

LSTATUS WINAPI FaultyOpenKey(HKEY parent, LPCWSTR name, DWORD options, REGSAM rights, PHKEY key) {
    const bool writes = (rights & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY)) != 0;
    if (g_faults.denyMachine && writes && IsMachineKey(parent)) return ERROR_ACCESS_DENIED;
    return g_openKey(parent, name, options, rights, key);
}

LSTATUS WINAPI FaultyDeleteKey(HKEY parent, LPCWSTR name) {
    if (g_faults.denyMachine && IsMachineKey(parent)) return ERROR_ACCESS_DENIED;
    return g_deleteKey(parent, name);
}

HRESULT WINAPI FaultyRegisterLibrary(ITypeLib* library, OLECHAR* path, OLECHAR* help) {
    if (g_faults.denyMachine) return TYPE_E_REGISTRYACCESS;
    if (FailsNow()) return HRESULT_FROM_WIN32(static_cast<DWORD>(g_faults.failure));
    return g_registerLibrary(library, path, help);
}

}  // namespace

FaultyRegistry::FaultyRegistry(const Faults& faults)
    : m_create("advapi32.dll", "RegCreateKeyExW", &FaultyCreateKey),
      m_set("advapi32.dll", "RegSetValueExW", &FaultySetValue),
      m_open("advapi32.dll", "RegOpenKeyExW", &FaultyOpenKey),
      m_delete("advapi32.dll", "RegDeleteKeyW", &FaultyDeleteKey),
      m_register("oleaut32.dll", "RegisterTypeLib", &FaultyRegisterLibrary) {
    g_createKey = m_create.Original<decltype(g_createKey)>();
    g_setValue = m_set.Original<decltype(g_setValue)>();
    g_openKey = m_open.Original<decltype(g_openKey)>();
    g_deleteKey = m_delete.Original<decltype(g_deleteKey)>();
    g_registerLibrary = m_register.Original<decltype(g_registerLibrary)>();
    g_faults = faults;
}

FaultyRegistry::~FaultyRegistry() {
    g_faults = {};
}

int FaultyRegistry::Calls() {
    return g_faults.calls;
}
