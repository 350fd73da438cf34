// Registering without rights and with calls that fail.
#include <doctest.h>

#include "platform/com/own_type_library.h"
#include "platform/executable_path.h"
#include "tray/type_libraries.h"
#include "tests/registration/faulty_registry.h"
#include "tests/registration/test_server.h"
#include "tests/support/only_under_wine.h"

TEST_CASE("without rights to the machine's classes the server is registered for the user alone") {
    const CleanRegistry clean;
    {
        const FaultyRegistry denied({.denyMachine = true});
        REQUIRE(RegisterServer(TestServer()) == S_OK);
    }
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(Stored(HKEY_CURRENT_USER, std::wstring(kFirstKey) + L"\\LocalServer32") ==
          L'"' + ExecutablePath() + L'"');
    CHECK(Stored(HKEY_CURRENT_USER, L"Software\\Classes\\RegistrationTests.Second\\CLSID") ==
          GuidText(kSecondClass));
    ITypeLib* library = nullptr;
    CHECK(LoadRegTypeLib({0x5260e1ed, 0xae71, 0x44d7, {0x83, 0x81, 0x90, 0x5c, 0xde, 0x9d, 0xc4, 0xa2}}, 1, 0,
                         0, &library) == S_OK);
    if (library != nullptr) library->Release();
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("without rights to the machine's classes the user's own classes can be unregistered") {
    const CleanRegistry clean;
    ServerDescription classesOnly = TestServer();
    classesOnly.typeLibraries.clear();
    const FaultyRegistry denied({.denyMachine = true});
    REQUIRE(RegisterServer(classesOnly) == S_OK);
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(UnregisterServer(classesOnly) == S_OK);
    CHECK(Difference(clean.before, ExportClasses()) == "");
}

TEST_CASE("what may not be removed is reported, and the user's own part is removed all the same" *
          kAsAdministrator) {
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

TEST_CASE("a registration for the machine replaces the user's own, which would hide it" * kAsAdministrator) {
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

TEST_CASE("a registration that fails at any of its steps undoes what it wrote" * kAsAdministrator) {
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

TEST_CASE("a server without its type library is not registered at all") {
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
