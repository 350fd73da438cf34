// A server of two classes, registered in a registry of the test's own.
#pragma once

#include <doctest.h>

#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/com/own_type_library.h"
#include "platform/com/registration.h"
#include "platform/executable_path.h"
#include "platform/handle.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_hive.h"
#include "tray/type_libraries.h"

inline constexpr CLSID kFirstClass = {
    0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x01}};
inline constexpr CLSID kSecondClass = {
    0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x02}};

inline const std::wstring kClasses = L"Software\\Classes\\";
inline const std::wstring kFirstKey = kClasses + L"CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}";
inline const std::wstring kFirstServerKey = kFirstKey + L"\\LocalServer32";
inline const std::wstring kFirstName = kClasses + L"RegistrationTests.First";
inline const std::wstring kSecondName = kClasses + L"RegistrationTests.Second";

// The public type library of the manager, and where the registry tells its path.
inline constexpr wchar_t kLibrary[] = L"{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}";
inline const std::wstring kLibraryKey = kClasses + L"TypeLib\\" + kLibrary;
inline const std::wstring kLibraryPathKey = kLibraryKey + L"\\1.0\\0\\win32";

inline ServerDescription TestServer() {
    return {
        .classes = {{kFirstClass, L"RegistrationTests.First", L"First test class", kPublicTypeLibrary},
                    {kSecondClass, L"RegistrationTests.Second", L"Second test class", kPublicTypeLibrary}},
        .typeLibraries = {kPublicTypeLibrary}};
}

// The machine's and the user's registry: every key, and every value with its type and size.
using Export = std::vector<std::wstring>;

inline void AddKey(HKEY key, const std::wstring& path, Export& lines) {
    lines.push_back(L'[' + path + L']');
    const size_t first = lines.size();
    wchar_t name[1024];
    for (DWORD i = 0;; ++i) {
        wchar_t data[1024]{};
        DWORD length = 1024;
        DWORD size = sizeof(data) - sizeof(wchar_t);
        DWORD type = 0;
        if (RegEnumValueW(key, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) !=
            ERROR_SUCCESS) {
            break;
        }
        lines.push_back(std::wstring(name) + L'=' + data + L", type " + std::to_wstring(type) + L", " +
                        std::to_wstring(size) + L" bytes");
    }
    // Windows tells them in the order in which they were written.
    std::sort(lines.begin() + static_cast<ptrdiff_t>(first), lines.end());
    for (DWORD i = 0; RegEnumKeyW(key, i, name, 1024) == ERROR_SUCCESS; ++i) {
        RegistryKey child;
        REQUIRE(RegOpenKeyExW(key, name, 0, KEY_READ, child.Put()) == ERROR_SUCCESS);
        AddKey(child.Get(), path + L'\\' + name, lines);
    }
}

inline Export Exported() {
    Export lines;
    AddKey(HKEY_LOCAL_MACHINE, L"HKLM", lines);
    AddKey(HKEY_CURRENT_USER, L"HKCU", lines);
    return lines;
}

// A text of the registry, "(none)" where there is none.
inline std::wstring Stored(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
    wchar_t text[1024] = L"";
    DWORD size = sizeof(text);
    const LSTATUS status = RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"(none)";
}

// The registry as a test finds it: classes and type libraries of others, and nothing of the test server.
struct CleanRegistry {
    CleanRegistry() {
        // The one that all type libraries refer to.
        constexpr wchar_t kStandardLibrary[] = L"TypeLib\\{00020430-0000-0000-C000-000000000046}";
        for (const TestHive* const hive : {&machine, &user}) {
            hive->Write(kClasses + kStandardLibrary, L"", L"OLE Automation");
            hive->Write(kClasses + L"Interface", L"", L"");
        }
        machine.Write(kClasses + L"CLSID\\{00000000-0000-0000-0000-000000000001}", L"", L"Another class");
        RegistryKey library;
        REQUIRE(RegOpenKeyExW(HKEY_LOCAL_MACHINE, (kClasses + kStandardLibrary).c_str(), 0, KEY_ALL_ACCESS,
                              library.Put()) == ERROR_SUCCESS);
        REQUIRE(RegCopyTreeW(HKEY_CLASSES_ROOT, kStandardLibrary, library.Get()) == ERROR_SUCCESS);
        REQUIRE(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes", 0, KEY_ALL_ACCESS, m_classes.Put()) ==
                ERROR_SUCCESS);
        REQUIRE(RegOverridePredefKey(HKEY_CLASSES_ROOT, m_classes.Get()) == ERROR_SUCCESS);
        before = Exported();
    }
    CleanRegistry(const CleanRegistry&) = delete;
    CleanRegistry& operator=(const CleanRegistry&) = delete;
    ~CleanRegistry() { RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr); }

    // As if the server had been registered from another folder.
    void MoveElsewhere() const {
        const std::wstring other = L"C:\\elsewhere\\server.exe";
        // With the NUL at their ends, which Wine would sometimes add when they are put back.
        for (const wchar_t* const name : {L"", L"ServerExecutable"})
            machine.Write(kFirstServerKey, name, other + L'\0');
        OwnTypeLibrary(kPublicTypeLibrary).Register(false, other);
    }

    const TestHive machine{HKEY_LOCAL_MACHINE};
    const TestHive user{HKEY_CURRENT_USER};
    Export before;

private:
    RegistryKey m_classes;
};
