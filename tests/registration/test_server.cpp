#include "tests/registration/test_server.h"

#include <algorithm>
#include <vector>

#include "platform/com/own_type_library.h"
#include "platform/executable_path.h"
#include "platform/text.h"
#include "tray/type_libraries.h"

namespace {

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

void RegisterLibrary(std::wstring path) {
    ComPtr<ITypeLib> library;
    REQUIRE(LoadTypeLibEx(ExecutablePath().c_str(), REGKIND_NONE, &library) == S_OK);
    REQUIRE(RegisterTypeLib(library.Get(), path.data(), nullptr) == S_OK);
}

}  // namespace

ServerDescription TestServer() {
    return {
        .classes = {{kFirstClass, L"RegistrationTests.First", L"First test class", kPublicTypeLibrary},
                    {kSecondClass, L"RegistrationTests.Second", L"Second test class", kPublicTypeLibrary}},
        .typeLibraries = {kPublicTypeLibrary}};
}

Export ExportClasses() {
    return ExportKeys(
        {L"CLSID", L"TypeLib", L"Interface", L"RegistrationTests.First", L"RegistrationTests.Second"});
}

Export ExportTestServer() {
    return ExportKeys({L"CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}",
                       L"CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B02}",
                       L"TypeLib\\{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}",
                       L"Interface\\{00433DB0-573D-4801-B12A-0EB32A036708}",
                       L"Interface\\{E9A7E6D8-9C6E-4DEC-AE73-04456755D3B4}",
                       L"Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}", L"RegistrationTests.First",
                       L"RegistrationTests.Second"});
}

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

std::wstring Stored(HKEY hive, const std::wstring& key, const wchar_t* name) {
    wchar_t text[1024] = L"";
    DWORD size = sizeof(text);
    const LSTATUS status = RegGetValueW(hive, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"(none)";
}

void Store(HKEY hive, const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    REQUIRE(RegSetKeyValueW(hive, key.c_str(), name, REG_SZ, text.c_str(),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS);
}

void MoveElsewhere(const std::wstring& commandLine) {
    Store(HKEY_LOCAL_MACHINE, kFirstServerKey, nullptr, commandLine);
    Store(HKEY_LOCAL_MACHINE, kFirstServerKey, L"ServerExecutable", kOtherServer);
    RegisterLibrary(kOtherServer);
}

std::wstring RegisteredLibraryPath() {
    HKEY classes = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes", 0, KEY_READ, &classes);
    const std::wstring path = OwnTypeLibrary(kPublicTypeLibrary).RegisteredPath(classes);
    RegCloseKey(classes);
    return path;
}

CleanRegistry::CleanRegistry() : m_libraryPath(RegisteredLibraryPath()) {
    REQUIRE(UnregisterServer(TestServer()) == S_OK);
    before = ExportClasses();
}

CleanRegistry::~CleanRegistry() {
    UnregisterServer(TestServer());
    if (!m_libraryPath.empty()) RegisterLibrary(m_libraryPath);
}
