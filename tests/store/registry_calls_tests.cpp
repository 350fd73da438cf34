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

bool SaveText(const std::wstring& text = L"abc", long type = REG_SZ) {
    return Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", text, type);
}

bool Delete(const wchar_t* name = L"Value") {
    return Registry().Delete(HKEY_CURRENT_USER, kKey, name);
}

// A value "abc" in a registry that is watched.
struct Watched {
    Watched() { hive.Write(kKey, L"Value", L"abc"); }

    // What a watched read returns.
    ReadBack Read() {
        ReadBack back = kUntouched;
        calls.Watch([&] { back = ReadValue(); });
        return back;
    }
    bool Save(const std::wstring& text = L"abc", long type = REG_SZ) {
        bool isSaved = false;
        calls.Watch([&] { isSaved = SaveText(text, type); });
        return isSaved;
    }
    bool Remove(const wchar_t* name = L"Value") {
        bool isDeleted = false;
        calls.Watch([&] { isDeleted = Delete(name); });
        return isDeleted;
    }
    // Does something between the question for the size and the reading.
    ReadBack ReadAfter(const std::function<void()>& change) {
        calls.beforeCall = [&](RegistryFunction function, const std::string&) {
            if (function == RegistryFunction::Info) change();
        };
        return Read();
    }

    const TestHive hive{HKEY_CURRENT_USER};
    RegistryCalls calls;
};

bool IsUsable(HKEY key) {
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr) != ERROR_INVALID_HANDLE;
}

}  // namespace

TEST_CASE_FIXTURE(Watched,
                  "reading a value probes its size, asks for the class, reads it and closes key and root") {
    CHECK(Read() == ReadBack{true, L"abc", REG_SZ, L""});
    CHECK(calls.Lines() == kRead);
    CHECK(calls.OpenHandles().empty());
}

TEST_CASE_FIXTURE(Watched, "reading an empty value makes the same calls and keeps the caller's default") {
    hive.Write(kKey, L"Value", L"");
    CHECK(Read() == ReadBack{true, L"default", REG_SZ, L""});
    Lines expected = kRead;
    expected[3] = expected[1];
    CHECK(calls.Lines() == expected);
}

TEST_CASE_FIXTURE(
    Watched, "reading a missing value changes no more than the type, and leaves the key open, not the root") {
    hive.Delete(kKey, L"Value");
    CHECK(Read() == ReadBack{false, L"default", 0, L""});
    CHECK(calls.Lines() == Lines{kRead[0], kRead[1], kRead[2], kRead[1], kRead[5]});
    CHECK(calls.OpenHandles() == Lines{"key1"});
    CHECK(IsUsable(calls.Handle("key1")));
}

TEST_CASE_FIXTURE(Watched, "reading under a missing key tries to open it and does nothing else") {
    hive.DeleteTree(kKey);
    CHECK(Read() == kUntouched);
    CHECK(calls.Lines() == Lines{kRead[0]});
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

TEST_CASE(
    "the read returns the class that the key was created with, cut where it is longer than the buffer") {
    const TestHive hive(HKEY_CURRENT_USER);
    const Registry registry;
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

TEST_CASE("value names and keys are found in any case") {
    const TestHive hive(HKEY_CURRENT_USER);
    const Registry registry;
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"", L"1Url", L"address", REG_SZ));
    CHECK(ReadValue(HKEY_CURRENT_USER, L"SOFTWARE\\calvane\\CALLS", L"1URL").text == L"address");
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"", L"1URL", L"another", REG_SZ));
    CHECK(hive.ValueCount(kKey) == 1);
    CHECK(Delete(L"1url"));
    CHECK(hive.ValueCount(kKey) == 0);
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
        CAPTURE(row.meaning);
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

TEST_CASE_FIXTURE(Watched, "a value that changes between the probe and the query is as the query finds it") {
    SUBCASE("one that grows fails the read") {
        CHECK(ReadAfter([&] { hive.Write(kKey, L"Value", L"a longer text"); }).text == L"default");
        CHECK(calls.Lines().back() == "RegCloseKey(HKCU)");
        CHECK(calls.OpenHandles() == Lines{"key1"});
    }
    SUBCASE("one that shrinks is read") {
        CHECK(ReadAfter([&] { hive.Write(kKey, L"Value", L"ab"); }).text == L"ab");
    }
    SUBCASE("one that is emptied leaves the default") {
        CHECK(ReadAfter([&] { hive.Write(kKey, L"Value", L""); }) == ReadBack{true, L"default", REG_SZ, L""});
    }
    SUBCASE("one that changes its type has the new one") {
        hive.Write(kKey, L"Value", L"abcd");
        CHECK(ReadAfter([&] { hive.Write(kKey, L"Value", REG_DWORD, "\x07\0\0\0"s); }) ==
              ReadBack{true, L"7", REG_DWORD, L""});
    }
    SUBCASE("one that vanishes is missing") {
        CHECK(ReadAfter([&] { hive.Delete(kKey, L"Value"); }) == ReadBack{false, L"default", 0, L""});
    }
}

TEST_CASE_FIXTURE(
    Watched, "saving creates the key, writes the value with nothing behind it, and leaves the key open") {
    CHECK(Save());
    CHECK(
        calls.Lines() ==
        Lines{
            R"(RegCreateKeyExA(HKCU, "Software\Calvane\Calls", 0, "", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "Value", 0, type 1, "abc", no NUL behind))",
        });
    CHECK(calls.OpenHandles() == Lines{"key1"});
    CHECK(RegSetValueExW(calls.Handle("key1"), L"More", 0, REG_SZ, nullptr, 0) == ERROR_SUCCESS);
    CHECK(hive.Exists(kKey, L"More"));
    CHECK(Save());
    CHECK(calls.OpenHandles().size() == 2);
}

TEST_CASE("saving passes on the class, the root, the value name and the type") {
    const TestHive hive(HKEY_LOCAL_MACHINE);
    RegistryCalls calls;
    const auto save = [] {
        CHECK(Registry().Save(HKEY_LOCAL_MACHINE, L"Software\\Deep\\Down", L"My class", L"", -2L, REG_DWORD));
    };
    CHECK(
        calls.Watch(save) ==
        Lines{
            R"(RegCreateKeyExA(HKLM, "Software\Deep\Down", 0, "My class", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "", 0, type 4, "\fe\ff\ff\ff", no NUL behind))",
        });
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

TEST_CASE_FIXTURE(Watched,
                  "deleting a value opens the key for writing, deletes the value and closes the key") {
    CHECK(Remove());
    CHECK(calls.Lines() == kDeletion);
    CHECK_FALSE(hive.Exists(kKey, L"Value"));
}

TEST_CASE_FIXTURE(Watched,
                  "deleting a missing value fails and closes the key, under a missing key it creates none") {
    hive.Write(kKey, L"Other", L"abc");
    hive.Delete(kKey, L"Value");
    CHECK_FALSE(Remove());
    CHECK(calls.Lines() == kDeletion);
    CHECK(hive.Exists(kKey, L"Other"));
    hive.DeleteTree(kKey);
    CHECK_FALSE(Remove());
    CHECK(calls.Lines() == Lines{kDeletion[0]});
    CHECK_FALSE(hive.Exists(kKey));
}

TEST_CASE_FIXTURE(Watched, "deleting with an empty key path does nothing, with or without a value name") {
    hive.Write(L"", L"Value", L"abc");
    for (const wchar_t* const name : {L"Value", L""}) {
        CHECK(calls.Watch([&] { CHECK_FALSE(Registry().Delete(HKEY_CURRENT_USER, L"", name)); }).empty());
    }
    CHECK(hive.Exists(L"", L"Value"));
}

TEST_CASE_FIXTURE(
    Watched, "deleting with an empty value name removes the key with its values, unless it has subkeys") {
    hive.Write(kKey + L"\\Below"s, L"Value", L"abc");
    CHECK_FALSE(Remove(L""));
    CHECK(hive.Exists(kKey + L"\\Below"s, L"Value"));
    hive.DeleteTree(kKey + L"\\Below"s);
    CHECK(Remove(L""));
    CHECK(calls.Lines() == Lines{R"(RegDeleteKeyA(HKCU, "Software\Calvane\Calls"))"});
    CHECK_FALSE(hive.Exists(kKey));
    CHECK(hive.Exists(L"Software\\Calvane"));
    CHECK_FALSE(Remove(L""));
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
            CHECK_FALSE(Remove(row.name));
            CHECK(calls.Lines().size() == row.calls);
            CHECK(calls.OpenHandles().empty());
        }
    }
    CHECK(hive.Exists(kKey, L"Value"));
}
