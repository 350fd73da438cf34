// Registering and unregistering, seen in the registry itself.
#include <doctest.h>

#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "platform/com_ptr.h"
#include "platform/own_type_library.h"
#include "platform/registration.h"
#include "platform/text.h"
#include "platform/type_libraries.h"
#include "tests/support/import_patch.h"

namespace {

constexpr CLSID kFirstClass = {0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x01}};
constexpr CLSID kSecondClass = {0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x02}};
constexpr wchar_t kFirstKey[] = L"Software\\Classes\\CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}";
constexpr wchar_t kOtherServer[] = L"C:\\elsewhere\\server.exe";

ServerDescription TestServer() {
    return {
        .classes = {{kFirstClass, L"RegistrationTests.First", L"First test class", kPublicTypeLibrary},
                    {kSecondClass, L"RegistrationTests.Second", L"Second test class", kPublicTypeLibrary}},
        .typeLibraries = {kPublicTypeLibrary}};
}

// Every key and value below a key, one a line.
using Export = std::set<std::wstring>;

void Walk(HKEY parent, const std::wstring& name, const std::wstring& path, Export& lines) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    lines.insert(L'[' + path + L']');
    wchar_t text[1024];
    for (DWORD i = 0;; ++i) {
        BYTE data[4096];
        DWORD length = 1024;
        DWORD size = sizeof(data);
        DWORD type = 0;
        if (RegEnumValueW(key, i, text, &length, nullptr, &type, data, &size) != ERROR_SUCCESS) break;
        lines.insert(L'[' + path + L"] " + std::wstring(text, length) + L'=' + std::to_wstring(type) + L':' +
                     FromAnsi(std::string(reinterpret_cast<const char*>(data), size)));
    }
    for (DWORD i = 0;; ++i) {
        DWORD length = 1024;
        if (RegEnumKeyExW(key, i, text, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        Walk(key, text, path + L'\\' + text, lines);
    }
    RegCloseKey(key);
}

const HKEY kHives[] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER};

Export ExportKeys(const std::vector<std::wstring>& keys) {
    Export lines;
    for (const HKEY hive : kHives) {
        const std::wstring name = hive == HKEY_LOCAL_MACHINE ? L"HKLM\\" : L"HKCU\\";
        for (const std::wstring& key : keys)
            Walk(hive, L"Software\\Classes\\" + key, name + key, lines);
    }
    return lines;
}

// What a registration can touch.
Export ExportClasses() {
    return ExportKeys(
        {L"CLSID", L"TypeLib", L"Interface", L"RegistrationTests.First", L"RegistrationTests.Second"});
}

// The same for the test server alone, which is quick to walk.
Export ExportTestServer() {
    return ExportKeys({L"CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}",
                       L"CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B02}",
                       L"TypeLib\\{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}",
                       L"Interface\\{00433DB0-573D-4801-B12A-0EB32A036708}",
                       L"Interface\\{E9A7E6D8-9C6E-4DEC-AE73-04456755D3B4}",
                       L"Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}", L"RegistrationTests.First",
                       L"RegistrationTests.Second"});
}

// The lines that only one of the exports has; empty when they are equal.
std::string Difference(const Export& before, const Export& after) {
    std::wstring text;
    for (const std::wstring& line : before) {
        if (!after.contains(line)) text += L"\n- " + line;
    }
    for (const std::wstring& line : after) {
        if (!before.contains(line)) text += L"\n+ " + line;
    }
    // A NUL would end the text in the report.
    std::ranges::replace(text, L'\0', L'.');
    return ToAnsi(text);
}

std::wstring Stored(HKEY hive, const std::wstring& key, const wchar_t* name = nullptr) {
    wchar_t text[1024] = L"";
    DWORD size = sizeof(text);
    const LSTATUS status = RegGetValueW(hive, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"(none)";
}

void Store(HKEY hive, const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    REQUIRE(RegSetKeyValueW(hive, key.c_str(), name, REG_SZ, text.c_str(),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS);
}

ComPtr<ITypeLib> PublicLibrary() {
    ComPtr<ITypeLib> library;
    REQUIRE(LoadTypeLibEx(ServerPath().c_str(), REGKIND_NONE, &library) == S_OK);
    return library;
}

std::wstring RegisteredLibraryPath() {
    HKEY classes = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes", 0, KEY_READ, &classes);
    const std::wstring path = OwnTypeLibrary(kPublicTypeLibrary).RegisteredPath(classes);
    RegCloseKey(classes);
    return path;
}

// Nothing of the test server is registered when a test starts. The type library is the manager's own: a
// registration of it by the manager returns afterwards.
struct CleanRegistry {
    CleanRegistry() : m_libraryPath(RegisteredLibraryPath()) {
        REQUIRE(UnregisterServer(TestServer()) == S_OK);
        before = ExportClasses();
    }
    ~CleanRegistry() {
        UnregisterServer(TestServer());
        if (!m_libraryPath.empty()) RegisterTypeLib(PublicLibrary().Get(), m_libraryPath.data(), nullptr);
    }

    Export before;

private:
    std::wstring m_libraryPath;
};

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

// How the registry functions below answer while a test runs.
struct Faults {
    bool denyMachine = false;
    int failAt = 0;  // the number of the writing call that fails, from 1; 0 for none
    LSTATUS failure = ERROR_NO_SYSTEM_RESOURCES;
    int calls = 0;
};

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

// Arms the faults for its lifetime.
class FaultyRegistry {
public:
    explicit FaultyRegistry(const Faults& faults)
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
    ~FaultyRegistry() { g_faults = {}; }

private:
    ImportPatch m_create;
    ImportPatch m_set;
    ImportPatch m_open;
    ImportPatch m_delete;
    ImportPatch m_register;
};

}  // namespace

TEST_CASE(
    "A registered class names its server, quoted and as it stands, its program id and its type library") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const std::wstring key = kFirstKey;
    CHECK(Stored(HKEY_LOCAL_MACHINE, key) == L"First test class");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\LocalServer32") == L'"' + ServerPath() + L'"');
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\LocalServer32", L"ServerExecutable") == ServerPath());
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\ProgID") == L"RegistrationTests.First");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\TypeLib") == L"{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\Version") == L"1.0");
    CHECK(ExportClasses().contains(L"[HKLM\\CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}\\Programmable]"));
    CHECK(Stored(HKEY_LOCAL_MACHINE, L"Software\\Classes\\RegistrationTests.First") == L"First test class");
    CLSID classId{};
    CHECK(CLSIDFromProgID(L"RegistrationTests.First", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, kFirstClass));
    CHECK(CLSIDFromProgID(L"RegistrationTests.Second", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, kSecondClass));
    CHECK(RegisteredLibraryPath() == ServerPath());
}

TEST_CASE("The marshaler finds the interfaces of a registered type library") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    // The interface of ConfigControl, and the marshaler for dual interfaces.
    const std::wstring key = L"Software\\Classes\\Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}";
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\TypeLib") == L"{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\TypeLib", L"Version") == L"1.0");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\ProxyStubClsid32") ==
          L"{00020424-0000-0000-C000-000000000046}");
}

TEST_CASE("Unregistering removes exactly what registering wrote") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    CHECK(ExportClasses() != clean.before);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("Registering twice leaves what registering once leaves") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export once = ExportClasses();
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(once, ExportClasses()) == "");
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("Registering from another folder replaces the paths") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export here = ExportClasses();
    const std::wstring key = std::wstring(kFirstKey) + L"\\LocalServer32";
    std::wstring other = kOtherServer;
    Store(HKEY_LOCAL_MACHINE, key, nullptr, L'"' + other + L'"');
    Store(HKEY_LOCAL_MACHINE, key, L"ServerExecutable", other);
    REQUIRE(RegisterTypeLib(PublicLibrary().Get(), other.data(), nullptr) == S_OK);
    REQUIRE(RegisteredLibraryPath() == other);
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(here, ExportClasses()) == "");
}

TEST_CASE("A registration from a folder that is gone is removed all the same") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    std::wstring other = kOtherServer;
    REQUIRE(RegisterTypeLib(PublicLibrary().Get(), other.data(), nullptr) == S_OK);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("A registration of which parts are missing is removed") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const std::wstring classes = L"Software\\Classes\\";
    SUBCASE("A value of the server key") {
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, (std::wstring(kFirstKey) + L"\\LocalServer32").c_str(),
                           nullptr);
    }
    SUBCASE("The class") {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, kFirstKey);
    }
    SUBCASE("The program id") {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (classes + L"RegistrationTests.First").c_str());
    }
    SUBCASE("The type library") {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE,
                       (classes + L"TypeLib\\{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}").c_str());
    }
    SUBCASE("One interface") {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE,
                       (classes + L"Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}").c_str());
    }
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("What somebody else keeps in the keys stays") {
    const CleanRegistry clean;
    const std::wstring progId = L"Software\\Classes\\RegistrationTests.First";
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    Store(HKEY_LOCAL_MACHINE, kFirstKey, L"AppID", L"somebody else's");
    Store(HKEY_LOCAL_MACHINE, progId + L"\\shell", nullptr, L"open");
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey, L"AppID") == L"somebody else's");
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_LOCAL_MACHINE, progId + L"\\shell") == L"open");
    CHECK(Stored(HKEY_LOCAL_MACHINE, progId) == L"(none)");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kFirstKey);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, progId.c_str());
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("Without rights to the machine's classes the server is registered for the user alone") {
    const CleanRegistry clean;
    {
        const FaultyRegistry denied({.denyMachine = true});
        REQUIRE(RegisterServer(TestServer()) == S_OK);
    }
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(Stored(HKEY_CURRENT_USER, std::wstring(kFirstKey) + L"\\LocalServer32") ==
          L'"' + ServerPath() + L'"');
    CHECK(Stored(HKEY_CURRENT_USER, L"Software\\Classes\\RegistrationTests.Second\\CLSID") ==
          GuidText(kSecondClass));
    ITypeLib* library = nullptr;
    CHECK(LoadRegTypeLib({0x5260e1ed, 0xae71, 0x44d7, {0x83, 0x81, 0x90, 0x5c, 0xde, 0x9d, 0xc4, 0xa2}}, 1, 0,
                         0, &library) == S_OK);
    if (library != nullptr) library->Release();
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("Without rights to the machine's classes the user's own classes can be unregistered") {
    const CleanRegistry clean;
    ServerDescription classesOnly = TestServer();
    classesOnly.typeLibraries.clear();
    const FaultyRegistry denied({.denyMachine = true});
    REQUIRE(RegisterServer(classesOnly) == S_OK);
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(UnregisterServer(classesOnly) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("What may not be removed is reported, and the user's own part is removed all the same") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export machineWide = ExportClasses();
    {
        const FaultyRegistry denied({.denyMachine = true});
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        CHECK(ExportClasses() != machineWide);
        CHECK(UnregisterServer(TestServer()) == E_ACCESSDENIED);
    }
    CHECK(Difference(machineWide, ExportClasses()) == "");
}

TEST_CASE("A registration for the machine replaces the user's own, which would hide it") {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export machineWide = ExportClasses();
    {
        const FaultyRegistry denied({.denyMachine = true});
        REQUIRE(RegisterServer(TestServer()) == S_OK);
    }
    REQUIRE(ExportClasses() != machineWide);
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(machineWide, ExportClasses()) == "");
}

TEST_CASE("A registration that fails at any of its steps undoes what it wrote") {
    const CleanRegistry clean;
    Faults faults;
    SUBCASE("On a machine that knows nothing of the server") {}
    SUBCASE("On a machine where it is registered from another folder") {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        const std::wstring key = std::wstring(kFirstKey) + L"\\LocalServer32";
        std::wstring other = kOtherServer;
        Store(HKEY_LOCAL_MACHINE, key, nullptr, other);
        Store(HKEY_LOCAL_MACHINE, key, L"ServerExecutable", other);
        REQUIRE(RegisterTypeLib(PublicLibrary().Get(), other.data(), nullptr) == S_OK);
    }
    SUBCASE("For the user alone") {
        faults.denyMachine = true;
    }
    const Export before = ExportTestServer();

    const HRESULT failure = HRESULT_FROM_WIN32(ERROR_NO_SYSTEM_RESOURCES);
    int failures = 0;
    for (faults.failAt = 1; failures < 100; ++faults.failAt, ++failures) {
        CAPTURE(faults.failAt);
        HRESULT result = S_OK;
        {
            const FaultyRegistry faulty(faults);
            result = RegisterServer(TestServer());
        }
        if (result == S_OK) break;
        CHECK(result == failure);
        CHECK(Difference(before, ExportTestServer()) == "");
    }
    UnregisterServer(TestServer());
    CHECK(Difference(clean.before, ExportClasses()) == "");
    // Each class has eight values and a key; each value is a key to make and a value to write.
    CHECK(failures >= 2 * 17);
    CHECK(failures < 100);
}

TEST_CASE("A server without its type library is not registered at all") {
    const CleanRegistry clean;
    ServerDescription server = TestServer();
    constexpr int kNoSuchLibrary = 99;
    SUBCASE("To register") {
        server.typeLibraries.push_back(kNoSuchLibrary);
    }
    SUBCASE("Of a class") {
        server.classes[1].typeLibrary = kNoSuchLibrary;
    }
    CHECK(FAILED(RegisterServer(server)));
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("The command line names what the server is to do") {
    struct Row {
        const wchar_t* arguments;
        ServerCommand command;
    };
    const Row rows[] = {
        {L"/RegServer", ServerCommand::Register},
        {L"-RegServer", ServerCommand::Register},
        {L"/regserver", ServerCommand::Register},
        {L"-REGSERVER", ServerCommand::Register},
        {L"/UnregServer", ServerCommand::Unregister},
        {L"-unRegServer", ServerCommand::Unregister},
        {L"/Embedding", ServerCommand::Run},
        {L"-Embedding", ServerCommand::Run},
        {L" \t-embedding  ", ServerCommand::Run},
        {L"-Embedding /RegServer", ServerCommand::Run},
        {L"something /UnregServer", ServerCommand::Unregister},
        {L"", ServerCommand::None},
        {L"   ", ServerCommand::None},
        {L"/", ServerCommand::None},
        {L"RegServer", ServerCommand::None},
        {L"--RegServer", ServerCommand::None},
        {L"/RegServerPerUser", ServerCommand::None},
        {L"/Register", ServerCommand::None},
        {L"\\RegServer", ServerCommand::None},
    };
    for (const Row& row : rows) {
        CAPTURE(ToAnsi(row.arguments));
        CHECK(ParseServerCommand(row.arguments) == row.command);
    }
}
