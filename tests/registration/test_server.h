// A server of two classes that the tests register, and what the registry holds of it.
#pragma once

#include <doctest.h>

#include <windows.h>
#include <oleauto.h>

#include <set>
#include <string>

#include "platform/com/com_ptr.h"
#include "platform/com/registration.h"

inline constexpr CLSID kFirstClass = {
    0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x01}};
inline constexpr CLSID kSecondClass = {
    0x9d2c1a40, 0x5b7e, 0x4c11, {0x8e, 0x01, 0x3a, 0x52, 0x77, 0x10, 0x6b, 0x02}};
inline constexpr wchar_t kFirstKey[] = L"Software\\Classes\\CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}";
inline constexpr wchar_t kFirstServerKey[] =
    L"Software\\Classes\\CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}\\LocalServer32";
inline constexpr wchar_t kOtherServer[] = L"C:\\elsewhere\\server.exe";

ServerDescription TestServer();

// Every key and value below a key, one a line.
using Export = std::set<std::wstring>;

// What a registration can touch.
Export ExportClasses();

// The same for the test server alone, which is quick to walk.
Export ExportTestServer();

// The lines that only one of the exports has; empty when they are equal.
std::string Difference(const Export& before, const Export& after);

// A text of the registry, "(none)" where there is none.
std::wstring Stored(HKEY hive, const std::wstring& key, const wchar_t* name = nullptr);
void Store(HKEY hive, const std::wstring& key, const wchar_t* name, const std::wstring& text);

// As if the server had been registered from another folder, with this command line.
void MoveElsewhere(const std::wstring& commandLine);

// Where the machine's registry says that the public type library lies; empty where it does not.
std::wstring RegisteredLibraryPath();

// Nothing of the test server is registered when a test starts. The type library is the manager's own: a
// registration of it by the manager returns afterwards.
struct CleanRegistry {
    CleanRegistry();
    ~CleanRegistry();

    Export before;

private:
    std::wstring m_libraryPath;
};
