// Registering and unregistering, seen in the registry itself, and how the command line asks for it.
#include <doctest.h>

#include <functional>

#include "tests/registration/test_server.h"

namespace {

// An interface of the public type library.
const std::wstring kInterfaceKey = kClasses + L"Interface\\{A833FC8B-B3F9-4D85-B884-CE90AF699049}";

struct Registered : CleanRegistry {
    Registered() {
        REQUIRE(RegisterServer(TestServer()) == S_OK);
        once = Exported();
    }

    Export once;
};

}  // namespace

TEST_CASE_FIXTURE(Registered,
                  "a registered class names its server, quoted and as it stands, its program id and its type "
                  "library, whose interfaces the marshaler finds") {
    const struct {
        std::wstring key;
        const wchar_t* name;
        std::wstring text;
    } rows[] = {
        {kFirstKey, nullptr, L"First test class"},
        {kFirstServerKey, nullptr, L'"' + ExecutablePath() + L'"'},
        {kFirstServerKey, L"ServerExecutable", ExecutablePath()},
        {kFirstKey + L"\\ProgID", nullptr, L"RegistrationTests.First"},
        {kFirstKey + L"\\TypeLib", nullptr, kLibrary},
        {kFirstKey + L"\\Version", nullptr, L"1.0"},
        {kFirstName, nullptr, L"First test class"},
        {kFirstName + L"\\CLSID", nullptr, GuidText(kFirstClass)},
        {kSecondName + L"\\CLSID", nullptr, GuidText(kSecondClass)},
        {kLibraryPathKey, nullptr, ExecutablePath()},
        {kInterfaceKey + L"\\TypeLib", nullptr, kLibrary},
        {kInterfaceKey + L"\\TypeLib", L"Version", L"1.0"},
        // The marshaler for dual interfaces.
        {kInterfaceKey + L"\\ProxyStubClsid32", nullptr, L"{00020424-0000-0000-C000-000000000046}"},
    };
    for (const auto& [key, name, text] : rows) {
        CAPTURE(key);
        CHECK(Stored(HKEY_LOCAL_MACHINE, key, name) == text);
    }
    CHECK(machine.Exists(kFirstKey + L"\\Programmable"));
}

TEST_CASE(
    "whatever became of a registration, registering again makes it whole, and unregistering removes exactly "
    "it") {
    using Damage = std::function<void(const Registered&)>;
    const std::pair<std::string, Damage> rows[] = {
        {"nothing", [](auto&) {}},
        {"a folder that is gone", [](auto& registered) { registered.MoveElsewhere(); }},
        {"no value of the server key",
         [](auto& registered) { registered.machine.Delete(kFirstServerKey, L""); }},
        {"no class", [](auto& registered) { registered.machine.DeleteTree(kFirstKey); }},
        {"no program id", [](auto& registered) { registered.machine.DeleteTree(kFirstName); }},
        {"no type library", [](auto& registered) { registered.machine.DeleteTree(kLibraryKey); }},
        {"no interface", [](auto& registered) { registered.machine.DeleteTree(kInterfaceKey); }},
    };
    for (const auto& [what, damage] : rows) {
        CAPTURE(what);
        const Registered registered;
        damage(registered);
        CHECK(RegisterServer(TestServer()) == S_OK);
        CHECK(Exported() == registered.once);
        damage(registered);
        for (int i = 0; i < 2; ++i) {
            CHECK(UnregisterServer(TestServer()) == S_OK);
            CHECK(Exported() == registered.before);
        }
    }
}

TEST_CASE_FIXTURE(Registered, "what somebody else keeps in the keys stays") {
    machine.Write(kFirstKey, L"AppID", L"somebody else's");
    machine.Write(kFirstName + L"\\shell", L"", L"open");
    CHECK(UnregisterServer(TestServer()) == S_OK);
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey, L"AppID") == L"somebody else's");
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstKey) == L"(none)");
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstName + L"\\shell") == L"open");
    CHECK(Stored(HKEY_LOCAL_MACHINE, kFirstName) == L"(none)");
    machine.DeleteTree(kFirstKey);
    machine.DeleteTree(kFirstName);
    CHECK(Exported() == before);
}

TEST_CASE("the command line names what the server is to do") {
    const std::pair<std::wstring, ServerCommand> rows[] = {
        {L"/RegServer", ServerCommand::Register},
        {L"-REGserver", ServerCommand::Register},
        {L"/UnregServer", ServerCommand::Unregister},
        {L"-unRegServer", ServerCommand::Unregister},
        {L"/Embedding", ServerCommand::Run},
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
    for (const auto& [arguments, command] : rows) {
        CAPTURE(arguments);
        CHECK(ParseServerCommand(arguments) == command);
    }
}
