// Registering and unregistering, seen in the registry itself.
#include <doctest.h>

#include "platform/executable_path.h"
#include "tests/registration/test_server.h"
#include "tests/support/only_under_wine.h"

TEST_CASE(
    "a registered class names its server, quoted and as it stands, its program id and its type library" *
    kAsAdministrator) {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const std::wstring key = kFirstKey;
    CHECK(Stored(HKEY_LOCAL_MACHINE, key) == L"First test class");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\LocalServer32") == L'"' + ExecutablePath() + L'"');
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\LocalServer32", L"ServerExecutable") == ExecutablePath());
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
    CHECK(RegisteredLibraryPath() == ExecutablePath());
}

TEST_CASE("the marshaler finds the interfaces of a registered type library" * kAsAdministrator) {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    // The interface of ConfigControl, and the marshaler for dual interfaces.
    const std::wstring key = L"Software\\Classes\\Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}";
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\TypeLib") == L"{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\TypeLib", L"Version") == L"1.0");
    CHECK(Stored(HKEY_LOCAL_MACHINE, key + L"\\ProxyStubClsid32") ==
          L"{00020424-0000-0000-C000-000000000046}");
}

TEST_CASE("unregistering removes exactly what registering wrote" * kAsAdministrator) {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    CHECK(ExportClasses() != clean.before);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("registering twice leaves what registering once leaves" * kAsAdministrator) {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export once = ExportClasses();
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(once, ExportClasses()) == "");
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("registering from another folder replaces the paths" * kAsAdministrator) {
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

TEST_CASE("a registration from a folder that is gone is removed all the same" * kAsAdministrator) {
    const CleanRegistry clean;
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    std::wstring other = kOtherServer;
    REQUIRE(RegisterTypeLib(PublicLibrary().Get(), other.data(), nullptr) == S_OK);
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("a registration of which parts are missing is removed" * kAsAdministrator) {
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

TEST_CASE("what somebody else keeps in the keys stays" * kAsAdministrator) {
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
