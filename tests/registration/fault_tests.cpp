// Registering without rights and with calls that fail.
#include <doctest.h>

#include "tests/registration/test_server.h"
#include "tests/support/import_patch.h"
#include "tests/support/registry_calls.h"
#include "tests/support/wine.h"

namespace {

// Whether an open key lies in the registry that a test has for HKEY_LOCAL_MACHINE.
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
    const std::wstring ofTest = std::to_wstring(GetCurrentProcessId()) + L"M\\";
    return std::wstring_view(name.text, name.length / sizeof(wchar_t)).find(ofTest) !=
           std::wstring_view::npos;
}

// While it exists nothing of the machine's can be changed where that is denied, and of the calls that write,
// those of the fault fail. One at a time.
class FaultyRegistry {
public:
    explicit FaultyRegistry(bool deniesMachine, const Fault& fault = {})
        : m_deniesMachine(deniesMachine), m_counter(fault) {
        s_current = this;
    }
    FaultyRegistry(const FaultyRegistry&) = delete;
    FaultyRegistry& operator=(const FaultyRegistry&) = delete;
    ~FaultyRegistry() { s_current = nullptr; }

private:
    static LSTATUS WINAPI Create(HKEY parent, LPCWSTR name, DWORD reserved, LPWSTR keyClass, DWORD options,
                                 REGSAM rights, LPSECURITY_ATTRIBUTES security, PHKEY key,
                                 LPDWORD disposition) {
        if (const LSTATUS fault = s_current->Write(RegistryFunction::Create, parent)) return fault;
        return s_current->m_create.Original<decltype(&RegCreateKeyExW)>()(
            parent, name, reserved, keyClass, options, rights, security, key, disposition);
    }

    static LSTATUS WINAPI Set(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
        if (const LSTATUS fault = s_current->Write(RegistryFunction::Set, key)) return fault;
        return s_current->m_set.Original<decltype(&RegSetValueExW)>()(key, name, reserved, type, data, size);
    }

    static LSTATUS WINAPI Open(HKEY parent, LPCWSTR name, DWORD options, REGSAM rights, PHKEY key) {
        const bool writes = (rights & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY)) != 0;
        if (writes && s_current->Denies(parent)) return ERROR_ACCESS_DENIED;
        return s_current->m_open.Original<decltype(&RegOpenKeyExW)>()(parent, name, options, rights, key);
    }

    static LSTATUS WINAPI Delete(HKEY parent, LPCWSTR name) {
        if (s_current->Denies(parent)) return ERROR_ACCESS_DENIED;
        return s_current->m_delete.Original<decltype(&RegDeleteKeyW)>()(parent, name);
    }

    static HRESULT WINAPI Register(ITypeLib* library, OLECHAR* path, OLECHAR* help) {
        const LSTATUS fault = s_current->Write(RegistryFunction::Set, HKEY_LOCAL_MACHINE);
        if (fault == ERROR_ACCESS_DENIED) return TYPE_E_REGISTRYACCESS;
        if (fault != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(fault));
        return s_current->m_register.Original<decltype(&RegisterTypeLib)>()(library, path, help);
    }

    bool Denies(HKEY key) const { return m_deniesMachine && IsMachineKey(key); }

    LSTATUS Write(RegistryFunction function, HKEY key) {
        if (Denies(key)) return ERROR_ACCESS_DENIED;
        return m_counter.Fails(function) ? m_counter.Cause().error : ERROR_SUCCESS;
    }

    static inline FaultyRegistry* s_current = nullptr;
    const bool m_deniesMachine;
    FaultCounter m_counter;
    const ImportPatch m_create{"advapi32.dll", "RegCreateKeyExW", &Create};
    const ImportPatch m_set{"advapi32.dll", "RegSetValueExW", &Set};
    const ImportPatch m_open{"advapi32.dll", "RegOpenKeyExW", &Open};
    const ImportPatch m_delete{"advapi32.dll", "RegDeleteKeyW", &Delete};
    const ImportPatch m_register{"oleaut32.dll", "RegisterTypeLib", &Register};
};

// On top of that registered for the user alone.
struct RegisteredForUser : CleanRegistry {
    RegisteredForUser() {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        machineWide = Exported();
        const FaultyRegistry denied(true);
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        REQUIRE(Exported() != machineWide);
    }

    Export machineWide;
};

}  // namespace

TEST_CASE_FIXTURE(CleanRegistry,
                  "without rights to the machine's classes the server is registered for the user alone") {
    {
        const FaultyRegistry denied(true);
        REQUIRE(RegisterServer(TestServer()) == S_OK);
    }
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstServerKey) == L'"' + ExecutablePath() + L'"');
    CHECK(Stored(HKEY_CURRENT_USER, kSecondName + L"\\CLSID") == GuidText(kSecondClass));
    // Wine registers a user's type library for the machine.
    CHECK(Stored(RunsUnderWine() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER, kLibraryPathKey) ==
          ExecutablePath());
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Exported() == before);
}

TEST_CASE_FIXTURE(CleanRegistry,
                  "without rights to the machine's classes the user's own classes can be unregistered") {
    ServerDescription classesOnly = TestServer();
    classesOnly.typeLibraries.clear();
    const FaultyRegistry denied(true);
    REQUIRE(RegisterServer(classesOnly) == S_OK);
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(UnregisterServer(classesOnly) == S_OK);
    CHECK(Exported() == before);
}

TEST_CASE_FIXTURE(RegisteredForUser,
                  "what may not be removed is reported, and the user's own part is removed all the same") {
    {
        const FaultyRegistry denied(true);
        CHECK(UnregisterServer(TestServer()) == E_ACCESSDENIED);
    }
    CHECK(Exported() == machineWide);
}

TEST_CASE_FIXTURE(RegisteredForUser,
                  "a registration for the machine replaces the user's own, which would hide it") {
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Exported() == machineWide);
}

TEST_CASE_FIXTURE(CleanRegistry, "a registration that fails at any of its steps undoes what it wrote") {
    bool deniesMachine = false;
    SUBCASE("on a machine that knows nothing of the server") {}
    SUBCASE("on a machine where it is registered from another folder") {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        MoveElsewhere(kOtherServer);
    }
    SUBCASE("for the user alone") {
        deniesMachine = true;
    }
    const Export atFirst = Exported();
    const auto registerWith = [&](long failingWrite) {
        Fault fault;
        fault.first = failingWrite;
        fault.error = ERROR_NO_SYSTEM_RESOURCES;
        const FaultyRegistry faulty(deniesMachine, fault);
        return RegisterServer(TestServer());
    };
    long failures = 0;
    while (failures < 100 && registerWith(failures + 1) == HRESULT_FROM_WIN32(ERROR_NO_SYSTEM_RESOURCES)) {
        ++failures;
        CAPTURE(failures);
        CHECK(Exported() == atFirst);
    }
    // Each class has eight values and a key; each value is a key to make and a value to write.
    CHECK(failures >= 2 * 17);
    CHECK(failures < 100);
    CHECK(registerWith(failures + 1) == S_OK);
    UnregisterServer(TestServer());
    CHECK(Exported() == before);
}

TEST_CASE_FIXTURE(CleanRegistry, "a server without its type library is not registered at all") {
    ServerDescription server = TestServer();
    constexpr int kNoSuchLibrary = 99;
    SUBCASE("to register") {
        server.typeLibraries.push_back(kNoSuchLibrary);
    }
    SUBCASE("of a class") {
        server.classes[1].typeLibrary = kNoSuchLibrary;
    }
    CHECK(FAILED(RegisterServer(server)));
    CHECK(Exported() == before);
}
