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
const Lines kDeletion{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x2))",
                      R"(RegDeleteValueA(key1, "Value"))", R"(RegCloseKey(key1))"};

Lines Picked(std::initializer_list<size_t> ofRead) {
    Lines lines;
    for (const size_t index : ofRead)
        lines.push_back(kRead[index]);
    return lines;
}

// What a read made of what its caller held.
struct ReadBack {
    bool isRead;
    std::wstring text;
    long type;
    std::wstring keyClass;
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

// A key with another value in a registry that is watched.
struct Watched {
    explicit Watched(const char* stored = "abc") {
        hive.Write(kKey, L"Other", L"abc");
        if (stored != nullptr) hive.Write(kKey, L"Value", REG_SZ, stored);
    }

    template <class Operation>
    auto Watch(Operation operation) {
        decltype(operation()) result{};
        calls.Watch([&] { result = operation(); });
        return result;
    }
    ReadBack Read() {
        return Watch([] { return ReadValue(); });
    }
    bool Save(const std::wstring& text = L"abc", long type = REG_SZ) {
        return Watch([&] { return Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", text, type); });
    }
    bool Delete(const wchar_t* name = L"Value", const wchar_t* key = kKey) {
        return Watch([&] { return Registry().Delete(HKEY_CURRENT_USER, key, name); });
    }

    const TestHive hive{HKEY_CURRENT_USER};
    RegistryCalls calls;
};

bool IsUsable(HKEY key) {
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr) != ERROR_INVALID_HANDLE;
}

}  // namespace

TEST_CASE("a read probes the size, asks for the class, reads the value and closes key and root") {
    struct Row {
        const char* meaning;
        const char* stored;  // null: no value
        ReadBack read;
        Lines calls;
        Lines open;
    };
    const ReadBack empty{true, L"default", REG_SZ, L""};
    const ReadBack missing{false, L"default", 0, L""};
    const Row rows[] = {
        {"a value", "abc", {true, L"abc", REG_SZ, L""}, kRead, {}},
        {"an empty one keeps the caller's default", "", empty, Picked({0, 1, 2, 1, 4, 5}), {}},
        {"a missing one leaves the key open, not the root",
         nullptr,
         missing,
         Picked({0, 1, 2, 1, 5}),
         {"key1"}},
    };
    for (const Row& row : rows) {
        CAPTURE(std::string(row.meaning));
        Watched watched(row.stored);
        CHECK(watched.Read() == row.read);
        CHECK(watched.calls.Lines() == row.calls);
        CHECK(watched.calls.OpenHandles() == row.open);
    }
    Watched watched;
    watched.hive.DeleteTree(kKey);
    CHECK(watched.Read() == kUntouched);
    CHECK(watched.calls.Lines() == Picked({0}));
}

TEST_CASE_FIXTURE(Watched, "a root that is no predefined one is closed by the read of a key that opened") {
    struct Row {
        const wchar_t* key;
        const wchar_t* value;
        bool isRead;
        bool isRootOpen;
    };
    for (const Row& row :
         {Row{L"Calvane\\Calls", L"Value", true, false}, Row{L"Calvane\\Calls", L"Missing", false, false},
          Row{L"Calvane\\Missing", L"Value", false, true}}) {
        CAPTURE(std::wstring(row.key));
        HKEY root = nullptr;
        REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &root) == ERROR_SUCCESS);
        CHECK(ReadValue(root, row.key, row.value).isRead == row.isRead);
        CHECK(IsUsable(root) == row.isRootOpen);
        if (row.isRootOpen) RegCloseKey(root);
    }
    // A predefined one can be read from again.
    CHECK(Read().isRead);
    CHECK(Read().isRead);
}

TEST_CASE_FIXTURE(
    Watched,
    "the read returns the class that the key was created with, cut where it is longer than the buffer") {
    const Registry registry;
    hive.DeleteTree(kKey);
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"Window settings", L"Value", L"abc", REG_SZ));
    CHECK(ReadValue().keyClass == L"Window settings");
    CHECK(ReadValue(HKEY_CURRENT_USER, kKey, L"Missing").keyClass == L"Window settings");
    hive.DeleteTree(kKey);
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, std::wstring(600, L'c'), L"Value", L"abc", REG_SZ));
    const ReadBack read = ReadValue();
    CHECK(read.text == L"abc");
    CHECK(read.keyClass.size() <= 512);
    CHECK(read.keyClass.find_first_not_of(L"c\0"s) == std::wstring::npos);
}

TEST_CASE_FIXTURE(Watched, "value names and keys are found in any case") {
    CHECK(ReadValue(HKEY_CURRENT_USER, L"SOFTWARE\\calvane\\CALLS", L"VALUE").text == L"abc");
    CHECK(Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"vALUE", L"another", REG_SZ));
    CHECK(hive.ValueCount(kKey) == 2);
    CHECK(Delete(L"value"));
    CHECK(hive.ValueCount(kKey) == 1);
}

TEST_CASE_FIXTURE(Watched, "a read of which a call fails, with whatever error") {
    struct Row {
        const char* meaning;
        RegistryFunction fails;
        long first;
        const char* stored;
        ReadBack read;
        size_t calls;  // how many are made
        size_t open;   // how many keys it leaves open
    };
    const ReadBack abc{true, L"abc", REG_SZ, L""};
    const ReadBack empty{true, L"default", REG_SZ, L""};
    const ReadBack noType{false, L"default", 0, L""};
    const ReadBack tooLong{false, L"default", REG_SZ, L""};
    const ReadBack noClass{true, L"abc", REG_SZ, std::wstring(511, L'\0')};
    using enum RegistryFunction;
    // An empty value fits the buffer of no length that a probe without a result leaves. What the probe had
    // seen, REG_SZ, is not taken for the query's result.
    const Row rows[] = {
        {"a key that cannot be opened ends it and changes nothing", Open, 1, "abc", kUntouched, 1, 0},
        {"a size probe that fails counts for nothing", Query, 1, "", empty, 6, 0},
        {"the query that follows decides", Query, 1, "abc", tooLong, 5, 1},
        {"a query that fails leaves the value and the key open", Query, 2, "abc", noType, 5, 1},
        {"a class that is not told is the untouched buffer", Info, 1, "abc", noClass, 6, 0},
        {"a key that cannot be closed hinders nothing", Close, 1, "abc", abc, 6, 1},
    };
    for (const Row& row : rows) {
        CAPTURE(std::string(row.meaning));
        hive.Write(kKey, L"Value", REG_SZ, row.stored);
        for (const LSTATUS error : kErrors) {
            CAPTURE(error);
            const size_t before = calls.OpenHandles().size();
            calls.Fail({row.fails, row.first, false, error});
            CHECK(Read() == row.read);
            CHECK(calls.Lines().size() == row.calls);
            if (row.calls > 1) CHECK(calls.Lines().back() == "RegCloseKey(HKCU)");
            CHECK(calls.OpenHandles().size() == before + row.open);
        }
    }
}

TEST_CASE("a value that changes between the probe and the query is as the query finds it") {
    struct Row {
        const char* meaning;
        DWORD type;
        const char* bytes;  // null: the value vanishes
        ReadBack read;
        Lines open;
    };
    const Row rows[] = {
        {"one that grows fails the read", REG_SZ, "abcde", {false, L"default", REG_SZ, L""}, {"key1"}},
        {"one that shrinks is read", REG_SZ, "ab", {true, L"ab", REG_SZ, L""}, {}},
        {"one that is emptied leaves the default", REG_SZ, "", {true, L"default", REG_SZ, L""}, {}},
        {"one that changes its type has the new one",
         REG_DWORD,
         "abcd",
         {true, L"1684234849", REG_DWORD, L""},
         {}},
        {"one that vanishes is missing", REG_SZ, nullptr, {false, L"default", 0, L""}, {"key1"}},
    };
    for (const Row& row : rows) {
        CAPTURE(std::string(row.meaning));
        Watched watched("abcd");
        watched.calls.beforeCall = [&](RegistryFunction function, const std::string&) {
            if (function != RegistryFunction::Info) return;
            watched.hive.Delete(kKey, L"Value");
            if (row.bytes != nullptr) watched.hive.Write(kKey, L"Value", row.type, row.bytes);
        };
        CHECK(watched.Read() == row.read);
        CHECK(watched.calls.Lines().back() == "RegCloseKey(HKCU)");
        CHECK(watched.calls.OpenHandles() == row.open);
    }
}

TEST_CASE_FIXTURE(Watched,
                  "saving creates the key, of the class, writes the value with nothing behind it, and leaves "
                  "the key open") {
    CHECK(Save());
    CHECK(
        calls.Lines() ==
        Lines{
            R"(RegCreateKeyExA(HKCU, "Software\Calvane\Calls", 0, "", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "Value", 0, type 1, "abc", no NUL behind))",
        });
    const TestHive machine(HKEY_LOCAL_MACHINE);
    CHECK(Watch([] {
        return Registry().Save(HKEY_LOCAL_MACHINE, L"Software\\Deep\\Down", L"My class", L"", -2L, REG_DWORD);
    }));
    CHECK(
        calls.Lines() ==
        Lines{
            R"(RegCreateKeyExA(HKLM, "Software\Deep\Down", 0, "My class", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key2, "", 0, type 4, "\fe\ff\ff\ff", no NUL behind))",
        });
    CHECK(calls.OpenHandles().size() == 2);
}

TEST_CASE_FIXTURE(Watched, "no type has a NUL behind what it counts") {
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
    "a save whose key cannot be created ends there, before the value is looked at; one whose value "
    "cannot be written, or has no form of the type, leaves the key open") {
    for (const LSTATUS error : kErrors) {
        for (const long type : {REG_SZ, REG_DWORD}) {
            calls.Fail({RegistryFunction::Create, 1, false, error});
            CHECK_FALSE(Save(L"no number", type));
            CHECK(calls.Functions() == Lines{"RegCreateKeyExA"});
        }
        const size_t before = calls.OpenHandles().size();
        calls.Fail({RegistryFunction::Set, 1, false, error});
        CHECK_FALSE(Save(L"new"));
        CHECK(calls.Functions() == Lines{"RegCreateKeyExA", "RegSetValueExA"});
        CHECK_THROWS_AS(Save(L"no number", REG_DWORD), AutomationError);
        CHECK(calls.Functions() == Lines{"RegCreateKeyExA"});
        CHECK(calls.OpenHandles().size() == before + 2);
    }
    CHECK(hive.Text(kKey, L"Value") == L"abc");
}

TEST_CASE_FIXTURE(
    Watched,
    "deleting a value opens the key for writing, deletes the value and closes the key; a missing one fails, "
    "under a missing key it creates none") {
    CHECK(Delete());
    CHECK(calls.Lines() == kDeletion);
    CHECK_FALSE(hive.Exists(kKey, L"Value"));
    CHECK_FALSE(Delete());
    CHECK(calls.Functions() == Lines{"RegOpenKeyExA", "RegDeleteValueA", "RegCloseKey"});
    CHECK(calls.OpenHandles().empty());
    CHECK(hive.Exists(kKey, L"Other"));
    hive.DeleteTree(kKey);
    CHECK_FALSE(Delete());
    CHECK(calls.Lines() == Lines{kDeletion[0]});
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
    CHECK(Delete(L""));
    CHECK(calls.Lines() == Lines{R"(RegDeleteKeyA(HKCU, "Software\Calvane\Calls"))"});
    CHECK_FALSE(hive.Exists(kKey));
    CHECK(hive.Exists(L"Software\\Calvane"));
    CHECK_FALSE(Delete(L""));
}

TEST_CASE_FIXTURE(
    Watched, "a deletion that fails, or whose key cannot be opened, returns false and leaves no key open") {
    struct Row {
        RegistryFunction fails;
        const wchar_t* name;
        size_t calls;
    };
    for (const Row& row :
         {Row{RegistryFunction::Open, L"Value", 1}, Row{RegistryFunction::DeleteValue, L"Value", 3},
          Row{RegistryFunction::DeleteKey, L"", 1}}) {
        for (const LSTATUS error : kErrors) {
            calls.Fail({row.fails, 1, false, error});
            CHECK_FALSE(Delete(row.name));
            CHECK(calls.Lines().size() == row.calls);
            CHECK(calls.OpenHandles().empty());
        }
    }
    CHECK(hive.Exists(kKey, L"Value"));
}
