// What becomes of the operations when the registry fails, or changes between two calls.
#include <doctest.h>

#include "platform/automation_error.h"
#include "store/registry.h"
#include "tests/store/registry_watch.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

namespace {

constexpr wchar_t kKey[] = L"Software\\Calvane\\Failures";
constexpr LSTATUS kErrors[] = {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY,
                               ERROR_MORE_DATA, ERROR_KEY_DELETED};

struct ReadBack {
    bool isRead = false;
    Variant value{L"default"};
    long type = 77;
    std::wstring keyClass = L"class";
};

ReadBack ReadValue() {
    ReadBack result;
    result.isRead =
        Registry().Read(HKEY_CURRENT_USER, kKey, L"Value", result.value, result.type, result.keyClass);
    return result;
}

std::vector<std::string> FunctionsOf(const Lines& lines) {
    std::vector<std::string> functions;
    for (const std::string& line : lines)
        functions.push_back(line.substr(0, line.find('(')));
    return functions;
}

}  // namespace

TEST_CASE("a read whose key cannot be opened ends there and changes nothing") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegOpenKeyExA", 1, error);
        ReadBack read;
        CHECK(watch.Calls([&] { read = ReadValue(); }).size() == 1);
        CHECK_FALSE(read.isRead);
        CHECK(ToText(read.value) == L"default");
        CHECK(read.type == 77);
        CHECK(read.keyClass == L"class");
    }
}

TEST_CASE("a size probe that fails counts for nothing: the query that follows decides") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegQueryValueExA", 1, error);
        // An empty value fits the buffer of no length that a probe without a result leaves.
        hive.Write(kKey, L"Value", L"");
        ReadBack read = ReadBack();
        watch.Calls([&] { read = ReadValue(); });
        CHECK(read.isRead);
        CHECK(read.type == REG_SZ);

        hive.Write(kKey, L"Value", L"abc");
        CHECK(FunctionsOf(watch.Calls([&] { read = ReadValue(); })) ==
              Lines{"RegOpenKeyExA", "RegQueryValueExA", "RegQueryInfoKeyA", "RegQueryValueExA",
                    "RegCloseKey"});
        CHECK_FALSE(read.isRead);
        CHECK(ToText(read.value) == L"default");
    }
}

TEST_CASE("a query that fails leaves the value, the key open and the root closed") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    size_t reads = 0;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegQueryValueExA", 2, error);
        ReadBack read;
        const Lines lines = watch.Calls([&] { read = ReadValue(); });
        ++reads;
        CHECK(FunctionsOf(lines) == Lines{"RegOpenKeyExA", "RegQueryValueExA", "RegQueryInfoKeyA",
                                          "RegQueryValueExA", "RegCloseKey"});
        CHECK(lines.back() == "RegCloseKey(HKCU)");
        CHECK(watch.OpenHandles().size() == reads);
        CHECK_FALSE(read.isRead);
        CHECK(ToText(read.value) == L"default");
        // What the probe had seen, REG_SZ, is not taken for the query's result.
        CHECK(read.type == 0);
        CHECK(read.keyClass.empty());
    }
}

TEST_CASE("a read goes on when the key does not tell its class, which is then the untouched buffer") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegQueryInfoKeyA", 1, error);
        ReadBack read;
        watch.Calls([&] { read = ReadValue(); });
        CHECK(read.isRead);
        CHECK(ToText(read.value) == L"abc");
        CHECK(read.keyClass == std::wstring(511, L'\0'));
        CHECK(watch.OpenHandles().empty());
    }
}

TEST_CASE("a key that cannot be closed does not make the read or the deletion fail") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        hive.Write(kKey, L"Value", L"abc");
        watch.FailFrom("RegCloseKey", 1, error);
        ReadBack read;
        CHECK(watch.Calls([&] { read = ReadValue(); }).size() == 6);
        CHECK(read.isRead);
        CHECK(ToText(read.value) == L"abc");
        bool isDeleted = false;
        watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value"); });
        CHECK(isDeleted);
    }
}

TEST_CASE("a value that grows between the probe and the query fails the read") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    watch.beforeCall = [&](const std::string& line) {
        if (line.starts_with("RegQueryInfoKeyA")) hive.Write(kKey, L"Value", L"a longer text");
    };
    ReadBack read;
    const Lines lines = watch.Calls([&] { read = ReadValue(); });
    CHECK_FALSE(read.isRead);
    CHECK(ToText(read.value) == L"default");
    CHECK(lines.back() == "RegCloseKey(HKCU)");
    CHECK(watch.OpenHandles() == Lines{"key1"});
}

TEST_CASE("a value that shrinks, or changes its type, is read as the query finds it") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    ReadBack read;
    hive.Write(kKey, L"Value", L"a longer text");
    watch.beforeCall = [&](const std::string& line) {
        if (line.starts_with("RegQueryInfoKeyA")) hive.Write(kKey, L"Value", L"abc");
    };
    watch.Calls([&] { read = ReadValue(); });
    CHECK(read.isRead);
    CHECK(ToText(read.value) == L"abc");

    hive.Write(kKey, L"Value", L"abcd");
    watch.beforeCall = [&](const std::string& line) {
        if (line.starts_with("RegQueryInfoKeyA")) hive.Write(kKey, L"Value", REG_DWORD, "\x07\0\0\0"s);
    };
    watch.Calls([&] { read = ReadValue(); });
    CHECK(read.isRead);
    CHECK(read.type == REG_DWORD);
    CHECK(read.value.Value().vt == VT_I4);
    CHECK(read.value.Value().lVal == 7);

    hive.Write(kKey, L"Value", L"abcd");
    watch.beforeCall = [&](const std::string& line) {
        if (line.starts_with("RegQueryInfoKeyA")) hive.Write(kKey, L"Value", L"");
    };
    ReadBack emptied;
    watch.Calls([&] { emptied = ReadValue(); });
    CHECK(emptied.isRead);
    CHECK(ToText(emptied.value) == L"default");
}

TEST_CASE("a value that vanishes between the probe and the query is missing") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    watch.beforeCall = [&](const std::string& line) {
        if (line.starts_with("RegQueryInfoKeyA")) hive.Delete(kKey, L"Value");
    };
    ReadBack read;
    watch.Calls([&] { read = ReadValue(); });
    CHECK_FALSE(read.isRead);
    CHECK(ToText(read.value) == L"default");
    CHECK(read.type == 0);
}

TEST_CASE("a save whose key cannot be created ends there, before the value is looked at") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegCreateKeyExA", 1, error);
        for (const long type : {REG_SZ, REG_DWORD}) {
            bool isSaved = true;
            CHECK(watch
                      .Calls([&] {
                          isSaved =
                              Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", L"no number", type);
                      })
                      .size() == 1);
            CHECK_FALSE(isSaved);
        }
    }
    CHECK_FALSE(hive.Exists(kKey));
}

TEST_CASE("a save whose value cannot be written returns false and leaves the key open") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    size_t saves = 0;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegSetValueExA", 1, error);
        bool isSaved = true;
        CHECK(FunctionsOf(watch.Calls([&] {
                  isSaved = Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", L"abc", REG_SZ);
              })) == Lines{"RegCreateKeyExA", "RegSetValueExA"});
        ++saves;
        CHECK_FALSE(isSaved);
        CHECK(watch.OpenHandles().size() == saves);
    }
    CHECK_FALSE(hive.Exists(kKey, L"Value"));
}

TEST_CASE("a save that raises a type mismatch writes nothing and leaves the key open") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    const auto save = [] {
        Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", L"no number", REG_DWORD);
    };
    CHECK_THROWS_AS(watch.Calls(save), AutomationError);
    CHECK(FunctionsOf(watch.Lines()) == Lines{"RegCreateKeyExA"});
    CHECK(watch.OpenHandles() == Lines{"key1"});
}

TEST_CASE("a deletion whose key cannot be opened ends there") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegOpenKeyExA", 1, error);
        bool isDeleted = true;
        CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value"); }).size() ==
              1);
        CHECK_FALSE(isDeleted);
    }
    CHECK(hive.Exists(kKey, L"Value"));
}

TEST_CASE("a deletion that fails returns false and closes the key") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    for (const LSTATUS error : kErrors) {
        CAPTURE(error);
        watch.FailOnce("RegDeleteValueA", 1, error);
        bool isDeleted = true;
        CHECK(FunctionsOf(watch.Calls([&] {
                  isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value");
              })) == Lines{"RegOpenKeyExA", "RegDeleteValueA", "RegCloseKey"});
        CHECK_FALSE(isDeleted);
        CHECK(watch.OpenHandles().empty());

        watch.FailOnce("RegDeleteKeyA", 1, error);
        isDeleted = true;
        CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L""); }).size() == 1);
        CHECK_FALSE(isDeleted);
    }
    CHECK(hive.Exists(kKey, L"Value"));
}
