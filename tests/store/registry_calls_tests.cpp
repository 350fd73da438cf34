// Which registry calls each operation makes, with which arguments, what it returns and which handles it
// leaves open, also where a call fails or the registry changes between two calls.
#include <doctest.h>

#include "platform/automation_error.h"
#include "store/registry.h"
#include "tests/support/registry_calls.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

namespace {

constexpr wchar_t kKey[] = L"Software\\Calvane\\Calls";
constexpr LSTATUS kErrors[] = {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY,
                               ERROR_MORE_DATA, ERROR_KEY_DELETED};

const Lines kRead{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x19))",
                  R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
                  R"(RegQueryInfoKeyA(key1, 512 NULs, 511))",
                  R"(RegQueryValueExA(key1, "Value", type 0, 3 NULs, 3))",
                  R"(RegCloseKey(key1))",
                  R"(RegCloseKey(HKCU))"};

// A query that fails leaves the key open.
const Lines kFailed{kRead[0], kRead[1], kRead[2], kRead[3], kRead[5]};
// Without a size from the probe.
const Lines kReadNothing{kRead[0], kRead[1], kRead[2], kRead[1], kRead[4], kRead[5]};
const Lines kFoundNothing{kRead[0], kRead[1], kRead[2], kRead[1], kRead[5]};

// What a read made of what its caller held.
struct ReadBack {
    bool isRead;
    std::wstring text;
    long type;
    std::wstring keyClass{};
    bool operator==(const ReadBack&) const = default;
};
const ReadBack kUntouched{false, L"default", 77, L"class"};

ReadBack ReadValue(HKEY root = HKEY_CURRENT_USER, const std::wstring& key = kKey,
                   const std::wstring& name = L"Value") {
    Variant value(L"default");
    ReadBack back = kUntouched;
    back.isRead = Registry().Read(root, key, name, value, back.type, back.keyClass);
    back.text = ToText(value);
    return back;
}

// A key with two values in a registry that is watched.
struct Watched {
    Watched() { hive.Write(kKey, L"Other", L"abc"); }

    // Null for no value.
    void Put(const char* bytes, DWORD type = REG_SZ) const {
        hive.Delete(kKey, L"Value");
        if (bytes != nullptr) hive.Write(kKey, L"Value", type, bytes);
    }

    template <class Operation>
    auto Watch(Operation operation) {
        decltype(operation()) result{};
        calls.Watch([&] { result = operation(); });
        return result;
    }
    bool Save(const std::wstring& text, long type = REG_SZ) {
        return Watch([&] { return Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", text, type); });
    }
    bool Delete(const wchar_t* name = L"Value", const wchar_t* key = kKey) {
        return Watch([&] { return Registry().Delete(HKEY_CURRENT_USER, key, name); });
    }

    const TestHive hive{HKEY_CURRENT_USER};
    RegistryCalls calls;
};

using enum RegistryFunction;

}  // namespace

TEST_CASE_FIXTURE(
    Watched,
    "a read probes the size, asks for the class, reads the value and closes key and root, whichever call "
    "fails and whatever becomes of the value meanwhile") {
    struct Row {
        std::string what;
        const char* stored;  // null: no value
        Fault fault;
        std::function<void()> beforeQuery;  // behind the probe
        ReadBack read;
        Lines calls;
        Lines open;
    };
    // An empty value fits the buffer of no length that a probe without a result leaves. What the probe had
    // seen, REG_SZ, is not taken for the query's result.
    const ReadBack abc{true, L"abc", REG_SZ};
    const ReadBack empty{true, L"default", REG_SZ};
    const ReadBack missing{false, L"default", 0};
    const ReadBack tooLong{false, L"default", REG_SZ};
    const ReadBack noClass{true, L"abc", REG_SZ, std::wstring(511, L'\0')};
    const Lines key{"key1"};
    const auto becomes = [this](const char* bytes, DWORD type = REG_SZ) {
        return [=, this] { Put(bytes, type); };
    };
    const Row rows[] = {
        {"a value", "abc", {}, {}, abc, kRead, {}},
        {"an empty one keeps the caller's default", "", {}, {}, empty, kReadNothing, {}},
        {"a missing one leaves the key open, not the root", nullptr, {}, {}, missing, kFoundNothing, key},
        {"a key that cannot be opened ends it", "abc", {Open, 1}, {}, kUntouched, {kRead[0]}, {}},
        {"a size probe that fails counts for nothing", "", {Query, 1}, {}, empty, kReadNothing, {}},
        {"the query that follows decides", "abc", {Query, 1}, {}, tooLong, kFoundNothing, key},
        {"a query that fails leaves both as they are", "abc", {Query, 2}, {}, missing, kFailed, key},
        {"a class that is not told is the untouched buffer", "abc", {Info, 1}, {}, noClass, kRead, {}},
        {"a key that cannot be closed hinders nothing", "abc", {Close, 1}, {}, abc, kRead, key},
        {"one that grows fails the read", "abc", {}, becomes("abcd"), tooLong, kFailed, key},
        {"one that shrinks is read", "abc", {}, becomes("ab"), {true, L"ab", REG_SZ}, kRead, {}},
        {"one that is emptied leaves the default", "abc", {}, becomes(""), empty, kRead, {}},
        {"one of another type", "abc", {}, becomes("x", REG_BINARY), {true, L"x", REG_BINARY}, kRead, {}},
        {"one that vanishes is missing", "abc", {}, becomes(nullptr), missing, kFailed, key},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        for (const LSTATUS error : kErrors) {
            CAPTURE(error);
            Put(row.stored);
            calls.Fail({row.fault.function, row.fault.first, false, error});
            calls.beforeCall = [&](RegistryFunction function, const std::string&) {
                if (function == Info && row.beforeQuery) row.beforeQuery();
            };
            CHECK(Watch([] { return ReadValue(); }) == row.read);
            CHECK(calls.Lines() == row.calls);
            CHECK(calls.OpenHandles() == row.open);
        }
    }
    hive.DeleteTree(kKey);
    CHECK(Watch([] { return ReadValue(); }) == kUntouched);
    CHECK(calls.Lines() == Lines{kRead[0]});
}

TEST_CASE_FIXTURE(Watched,
                  "a root that is no predefined one is closed by the read of a key that opened, with the "
                  "value or without") {
    Put("abc");
    for (const auto& [key, value, isRead, isRootOpen] : {std::tuple(L"Calvane\\Calls", L"Value", true, false),
                                                         {L"Calvane\\Calls", L"Missing", false, false},
                                                         {L"Calvane\\Missing", L"Value", false, true}}) {
        CAPTURE(isRead);
        HKEY root = nullptr;
        REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &root) == ERROR_SUCCESS);
        CHECK(ReadValue(root, key, value).isRead == isRead);
        CHECK((RegCloseKey(root) == ERROR_SUCCESS) == isRootOpen);
    }
    // A predefined one can be read from again.
    CHECK(ReadValue().isRead);
    CHECK(ReadValue().isRead);
}

TEST_CASE_FIXTURE(
    Watched,
    "the read returns the class that the key was created with, cut where it is longer than the buffer") {
    for (const std::wstring& keyClass : {L"Window settings"s, std::wstring(600, L'c')}) {
        hive.DeleteTree(kKey);
        REQUIRE(Registry().Save(HKEY_CURRENT_USER, kKey, keyClass, L"Value", L"abc", REG_SZ));
        const ReadBack read = ReadValue();
        CHECK(read.text == L"abc");
        if (keyClass.size() < 512) CHECK(read.keyClass == keyClass);
        CHECK(read.keyClass.size() <= 512);
        CHECK(read.keyClass.find_first_not_of(keyClass + L'\0') == std::wstring::npos);
        CHECK(ReadValue(HKEY_CURRENT_USER, kKey, L"Missing").keyClass == read.keyClass);
    }
}

TEST_CASE_FIXTURE(
    Watched,
    "saving creates the key, of the class, writes the value with nothing behind it, whatever its type, and "
    "leaves the key open; where the key cannot be created it ends there, before the value is looked at") {
    const std::string create =
        R"(RegCreateKeyExA(HKCU, "Software\Calvane\Calls", 0, "", 0, 0x2, {50, no descriptor, inherited}))";
    const Lines all{create, R"(RegSetValueExA(key1, "Value", 0, type 1, "abc", no NUL behind))"};
    CHECK(Save(L"abc"));
    CHECK(calls.Lines() == all);
    CHECK(calls.OpenHandles() == Lines{"key1"});
    for (const LSTATUS error : kErrors) {
        calls.Fail({Create, 1, false, error});
        for (const long type : {REG_SZ, REG_DWORD}) {
            CHECK_FALSE(Save(L"no number", type));
            CHECK(calls.Lines() == Lines{create});
        }
        calls.Fail({Set, 1, false, error});
        CHECK_FALSE(Save(L"abc"));
        CHECK(calls.Lines() == all);
        CHECK(calls.OpenHandles() == Lines{"key1"});
    }
    calls.Fail({});
    // A value that has no form of its type.
    CHECK_THROWS_AS(Save(L"no number", REG_DWORD), AutomationError);
    CHECK(calls.Lines() == Lines{create});
    CHECK(calls.OpenHandles() == Lines{"key1"});
    CHECK(hive.Text(kKey, L"Value") == L"abc");

    const TestHive machine(HKEY_LOCAL_MACHINE);
    CHECK(Watch([] {
        return Registry().Save(HKEY_LOCAL_MACHINE, L"Software\\Deep\\Down", L"My class", L"", -2L, REG_DWORD);
    }));
    CHECK(
        calls.Lines() ==
        Lines{
            R"(RegCreateKeyExA(HKLM, "Software\Deep\Down", 0, "My class", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "", 0, type 4, "\fe\ff\ff\ff", no NUL behind))",
        });
    for (long type = 0; type <= 11; ++type) {
        CAPTURE(type);
        for (const std::wstring& text : {L"7"s, L"12345"s, L"1234567"s, L"123456789"s}) {
            CHECK(Save(text, type));
            CHECK(calls.Lines().at(1).ends_with(", no NUL behind)"));
        }
    }
}

TEST_CASE_FIXTURE(
    Watched,
    "deleting a value opens the key for writing, deletes the value and closes the key; a call that fails "
    "ends it and leaves no key open; a missing key is not created") {
    const Lines all{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x2))",
                    R"(RegDeleteValueA(key1, "Value"))", R"(RegCloseKey(key1))"};
    const std::tuple<std::string, Fault, bool, Lines> rows[] = {
        {"a key that cannot be opened", {Open, 1}, false, {all[0]}},
        {"a value that cannot be deleted", {DeleteValue, 1}, false, all},
        {"a value", {}, true, all},
        {"a missing one", {}, false, all}};
    Put("abc");
    for (const auto& [what, fault, isDeleted, made] : rows) {
        CAPTURE(what);
        calls.Fail(fault);
        CHECK(Delete() == isDeleted);
        CHECK(calls.Lines() == made);
        CHECK(calls.OpenHandles().empty());
        CHECK(hive.Exists(kKey, L"Value") == (fault.first != 0));
        CHECK(hive.Exists(kKey, L"Other"));
    }
    hive.DeleteTree(kKey);
    CHECK_FALSE(Delete());
    CHECK(calls.Lines() == Lines{all[0]});
    CHECK_FALSE(hive.Exists(kKey));
}

TEST_CASE_FIXTURE(
    Watched,
    "deleting with an empty value name removes the key with its values, unless it has subkeys; an empty key "
    "path does nothing") {
    hive.Write(L"", L"Value", L"abc");
    for (const wchar_t* const name : {L"Value", L""}) {
        CHECK_FALSE(Delete(name, L""));
        CHECK(calls.Lines().empty());
    }
    CHECK(hive.Exists(L"", L"Value"));
    hive.Write(kKey + L"\\Below"s, L"Value", L"abc");
    CHECK_FALSE(Delete(L""));
    CHECK(hive.Exists(kKey + L"\\Below"s, L"Value"));
    hive.DeleteTree(kKey + L"\\Below"s);
    calls.Fail({DeleteKey, 1});
    CHECK_FALSE(Delete(L""));
    calls.Fail({});
    CHECK(Delete(L""));
    CHECK(calls.Lines() == Lines{R"(RegDeleteKeyA(HKCU, "Software\Calvane\Calls"))"});
    CHECK_FALSE(hive.Exists(kKey));
    CHECK(hive.Exists(L"Software\\Calvane"));
    CHECK_FALSE(Delete(L""));
}
