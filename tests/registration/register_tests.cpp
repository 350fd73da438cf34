// Registering and unregistering, seen in the registry itself.
#include <doctest.h>

#include <functional>

#include "platform/executable_path.h"
#include "platform/text.h"
#include "tests/registration/test_server.h"
#include "tests/support/only_under_wine.h"

namespace {

// The public type library of the manager, and one of its interfaces.
constexpr wchar_t kLibrary[] = L"{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}";
constexpr wchar_t kInterface[] = L"{A833FC8B-B3F9-4D85-B884-CE90AF699049}";

const std::wstring kClasses = L"Software\\Classes\\";
const std::wstring kProgId = kClasses + L"RegistrationTests.First";

struct Registered : CleanRegistry {
    Registered() {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        once = ExportClasses();
    }

    Export once;
};

std::wstring OfMachine(const std::wstring& key, const wchar_t* name = nullptr) {
    return Stored(HKEY_LOCAL_MACHINE, key, name);
}

void Delete(const std::wstring& key) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
}

}  // namespace

TEST_CASE_FIXTURE(
    Registered,
    "a registered class names its server, quoted and as it stands, its program id and its type library" *
        kAsAdministrator) {
    const std::wstring key = kFirstKey;
    CHECK(OfMachine(key) == L"First test class");
    CHECK(OfMachine(kFirstServerKey) == L'"' + ExecutablePath() + L'"');
    CHECK(OfMachine(kFirstServerKey, L"ServerExecutable") == ExecutablePath());
    CHECK(OfMachine(key + L"\\ProgID") == L"RegistrationTests.First");
    CHECK(OfMachine(key + L"\\TypeLib") == kLibrary);
    CHECK(OfMachine(key + L"\\Version") == L"1.0");
    CHECK(once.contains(L"[HKLM\\CLSID\\{9D2C1A40-5B7E-4C11-8E01-3A5277106B01}\\Programmable]"));
    CHECK(OfMachine(kProgId) == L"First test class");
    CLSID classId{};
    CHECK(CLSIDFromProgID(L"RegistrationTests.First", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, kFirstClass));
    CHECK(CLSIDFromProgID(L"RegistrationTests.Second", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, kSecondClass));
    CHECK(RegisteredLibraryPath() == ExecutablePath());
}

TEST_CASE_FIXTURE(Registered,
                  "the marshaler finds the interfaces of a registered type library" * kAsAdministrator) {
    const std::wstring key = kClasses + L"Interface\\" + kInterface;
    CHECK(OfMachine(key + L"\\TypeLib") == kLibrary);
    CHECK(OfMachine(key + L"\\TypeLib", L"Version") == L"1.0");
    // The marshaler for dual interfaces.
    CHECK(OfMachine(key + L"\\ProxyStubClsid32") == L"{00020424-0000-0000-C000-000000000046}");
}

TEST_CASE_FIXTURE(
    Registered,
    "registering twice leaves what registering once leaves, and unregistering removes exactly that" *
        kAsAdministrator) {
    CHECK(once != before);
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(once, ExportClasses()) == "");
    for (int i = 0; i < 2; ++i) {
        CHECK(UnregisterServer(TestServer()) == S_OK);
        CHECK(Difference(before, ExportClasses()) == "");
    }
}

TEST_CASE_FIXTURE(Registered, "registering from another folder replaces the paths" * kAsAdministrator) {
    MoveElsewhere(std::wstring(L"\"") + kOtherServer + L'"');
    REQUIRE(RegisteredLibraryPath() == kOtherServer);
    CHECK(RegisterServer(TestServer()) == S_OK);
    CHECK(Difference(once, ExportClasses()) == "");
}

TEST_CASE("a registration that is damaged or of a folder that is gone is removed all the same" *
          kAsAdministrator) {
    struct Row {
        const char* what;
        std::function<void()> damage;
    };
    const Row rows[] = {
        {"a folder that is gone", [] { MoveElsewhere(kOtherServer); }},
        {"no value of the server key",
         [] { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kFirstServerKey, nullptr); }},
        {"no class", [] { Delete(kFirstKey); }},
        {"no program id", [] { Delete(kProgId); }},
        {"no type library", [] { Delete(kClasses + L"TypeLib\\" + kLibrary); }},
        {"no interface", [] { Delete(kClasses + L"Interface\\" + kInterface); }},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        const Registered registered;
        row.damage();
        CHECK(UnregisterServer(TestServer()) == S_OK);
        CHECK(Difference(registered.before, ExportClasses()) == "");
    }
}

TEST_CASE_FIXTURE(Registered, "what somebody else keeps in the keys stays" * kAsAdministrator) {
    Store(HKEY_LOCAL_MACHINE, kFirstKey, L"AppID", L"somebody else's");
    Store(HKEY_LOCAL_MACHINE, kProgId + L"\\shell", nullptr, L"open");
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(OfMachine(kFirstKey, L"AppID") == L"somebody else's");
    CHECK(OfMachine(kFirstKey) == L"(none)");
    CHECK(OfMachine(kProgId + L"\\shell") == L"open");
    CHECK(OfMachine(kProgId) == L"(none)");
    Delete(kFirstKey);
    Delete(kProgId);
    CHECK(Difference(before, ExportClasses()) == "");
}
