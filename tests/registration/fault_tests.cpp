// Registering without rights and with calls that fail.
#include <doctest.h>

#include <set>

#include "tests/registration/test_server.h"
#include "tests/support/import_fake.h"
#include "tests/support/wine.h"

namespace {

constexpr LSTATUS kError = ERROR_NO_SYSTEM_RESOURCES;

// While it exists nothing of the machine's can be changed where that is denied, and of the calls that write
// one fails, counted from 1.
struct FaultyRegistry {
    const bool deniesMachine;
    const long failingWrite = 0;
    long writes = 0;
    std::set<HKEY> machineKeys{HKEY_LOCAL_MACHINE};

    bool Denies(HKEY key) const { return deniesMachine && machineKeys.contains(key); }
    LSTATUS Write(HKEY key) {
        if (Denies(key)) return ERROR_ACCESS_DENIED;
        return ++writes == failingWrite ? kError : ERROR_SUCCESS;
    }

    const ImportFake<"RegOpenKeyExW", decltype(&RegOpenKeyExW)> open{
        "advapi32.dll",
        [this](HKEY parent, LPCWSTR name, DWORD options, REGSAM rights, PHKEY key) -> LSTATUS {
            CHECK(options == 0);
            const bool isToWrite = (rights & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY)) != 0;
            if (isToWrite && Denies(parent)) return ERROR_ACCESS_DENIED;
            const LSTATUS status = open.Original(parent, name, options, rights, key);
            if (status == ERROR_SUCCESS && machineKeys.contains(parent)) machineKeys.insert(*key);
            return status;
        }};
    const ImportFake<"RegCloseKey", decltype(&RegCloseKey)> close{"advapi32.dll",
                                                                  [this](HKEY key) -> LSTATUS {
                                                                      machineKeys.erase(key);
                                                                      return close.Original(key);
                                                                  }};
    const ImportFake<"RegCreateKeyExW", decltype(&RegCreateKeyExW)> create{
        "advapi32.dll", [this](HKEY parent, LPCWSTR name, DWORD reserved, auto... rest) {
            CHECK(reserved == 0);
            const LSTATUS fault = Write(parent);
            return fault != ERROR_SUCCESS ? fault : create.Original(parent, name, reserved, rest...);
        }};
    const ImportFake<"RegSetValueExW", decltype(&RegSetValueExW)> set{
        "advapi32.dll", [this](HKEY key, LPCWSTR name, DWORD reserved, auto... rest) {
            CHECK(reserved == 0);
            const LSTATUS fault = Write(key);
            return fault != ERROR_SUCCESS ? fault : set.Original(key, name, reserved, rest...);
        }};
    const ImportFake<"RegDeleteKeyW", decltype(&RegDeleteKeyW)> remove{
        "advapi32.dll", [this](HKEY parent, LPCWSTR name) -> LSTATUS {
            return Denies(parent) ? ERROR_ACCESS_DENIED : remove.Original(parent, name);
        }};
    const ImportFake<"RegisterTypeLib", decltype(&RegisterTypeLib)> registers{
        "oleaut32.dll", [this](auto... arguments) {
            const LSTATUS fault = Write(HKEY_LOCAL_MACHINE);
            if (fault == ERROR_ACCESS_DENIED) return TYPE_E_REGISTRYACCESS;
            // What fails may have been done in part.
            const HRESULT result = registers.Original(arguments...);
            return fault != ERROR_SUCCESS ? HRESULT_FROM_WIN32(static_cast<DWORD>(fault)) : result;
        }};
};

// RegisterServer or UnregisterServer, called by a user who may not change the machine's classes.
HRESULT WithoutRights(decltype(&RegisterServer) call, const ServerDescription& server = TestServer()) {
    FaultyRegistry denied{true};
    return call(server);
}

}  // namespace

TEST_CASE_FIXTURE(CleanRegistry,
                  "without rights to the machine's classes the server is registered for the user alone, and "
                  "the user's own classes can be unregistered") {
    REQUIRE(WithoutRights(RegisterServer) == S_OK);
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstKey) == L"First test class");
    CHECK(Stored(HKEY_CURRENT_USER, kFirstServerKey) == L'"' + ExecutablePath() + L'"');
    CHECK(Stored(HKEY_CURRENT_USER, kSecondName + L"\\CLSID") == GuidText(kSecondClass));
    // Wine registers a user's type library for the machine.
    CHECK(Stored(RunsUnderWine() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER, kLibraryPathKey) ==
          ExecutablePath());
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Exported() == before);

    ServerDescription classesOnly = TestServer();
    classesOnly.typeLibraries.clear();
    REQUIRE(WithoutRights(RegisterServer, classesOnly) == S_OK);
    REQUIRE(Exported() != before);
    CHECK(WithoutRights(UnregisterServer, classesOnly) == S_OK);
    CHECK(Exported() == before);
}

TEST_CASE_FIXTURE(CleanRegistry, "beside a registration for the machine the user's own does not stay") {
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    const Export machineWide = Exported();
    REQUIRE(WithoutRights(RegisterServer) == S_OK);
    REQUIRE(Exported() != machineWide);
    SUBCASE("where the machine's may not be removed, which is reported") {
        CHECK(WithoutRights(UnregisterServer) == E_ACCESSDENIED);
    }
    SUBCASE("where the machine's is registered again: it would hide that") {
        CHECK(RegisterServer(TestServer()) == S_OK);
    }
    CHECK(Exported() == machineWide);
}

TEST_CASE_FIXTURE(
    CleanRegistry,
    "classes that cannot be opened are not taken for missing ones: unregistering reports them") {
    REQUIRE(RegisterServer(TestServer()) == S_OK);
    {
        const ImportFake<"RegOpenKeyExW", decltype(&RegOpenKeyExW)> open{
            "advapi32.dll", [&open](HKEY parent, auto... rest) -> LSTATUS {
                return parent == HKEY_LOCAL_MACHINE ? kError : open.Original(parent, rest...);
            }};
        CHECK(UnregisterServer(TestServer()) == HRESULT_FROM_WIN32(kError));
    }
    CHECK(UnregisterServer(TestServer()) == S_OK);
}

TEST_CASE_FIXTURE(CleanRegistry, "a registration that fails at any of its steps undoes what it wrote") {
    bool deniesMachine = false;
    SUBCASE("on a machine that knows nothing of the server") {}
    SUBCASE("on a machine where it is registered from another folder") {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        MoveElsewhere();
    }
    SUBCASE("for the user alone") {
        deniesMachine = true;
    }
    const Export atFirst = Exported();
    const auto registerWith = [&](long failingWrite) {
        FaultyRegistry faulty{deniesMachine, failingWrite};
        return RegisterServer(TestServer());
    };
    long failures = 0;
    while (failures < 100 && registerWith(failures + 1) == HRESULT_FROM_WIN32(kError)) {
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
