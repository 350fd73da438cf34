// Which registry calls a read makes, with which arguments, what it returns and which handles it leaves open.
#include <doctest.h>

#include "platform/handle.h"
#include "store/registry.h"
#include "tests/store/registry_watch.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

namespace {

constexpr wchar_t kKey[] = L"Software\\Calvane\\Calls";

struct ReadBack {
    bool isRead = false;
    Variant value{L"default"};
    long type = 77;
    std::wstring keyClass = L"class";
};

ReadBack ReadValue(HKEY root, const std::wstring& key, const std::wstring& name) {
    ReadBack result;
    result.isRead = Registry().Read(root, key, name, result.value, result.type, result.keyClass);
    return result;
}

bool IsUsable(HKEY key) {
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr) != ERROR_INVALID_HANDLE;
}

}  // namespace

TEST_CASE("reading a value probes its size, asks for the class, reads it and closes the key and the root") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    ReadBack read;
    CHECK(watch.Calls([&] { read = ReadValue(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{
              R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x19))",
              R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
              R"(RegQueryInfoKeyA(key1, 512 NULs, 511))",
              R"(RegQueryValueExA(key1, "Value", type 0, 3 NULs, 3))",
              R"(RegCloseKey(key1))",
              R"(RegCloseKey(HKCU))",
          });
    CHECK(read.isRead);
    CHECK(ToText(read.value) == L"abc");
    CHECK(read.type == REG_SZ);
    CHECK(read.keyClass.empty());
    CHECK(watch.OpenHandles().empty());
}

TEST_CASE("reading a missing value changes no more than the type, and leaves the key open but not the root") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Other", L"abc");
    RegistryWatch watch;
    ReadBack read;
    CHECK(watch.Calls([&] { read = ReadValue(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{
              R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x19))",
              R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
              R"(RegQueryInfoKeyA(key1, 512 NULs, 511))",
              R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
              R"(RegCloseKey(HKCU))",
          });
    CHECK_FALSE(read.isRead);
    CHECK(ToText(read.value) == L"default");
    CHECK(read.type == 0);
    CHECK(watch.OpenHandles() == Lines{"key1"});
    CHECK(IsUsable(watch.Handle("key1")));
}

TEST_CASE("reading under a missing key tries to open it and does nothing else") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    ReadBack read;
    CHECK(watch.Calls([&] { read = ReadValue(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x19))"});
    CHECK_FALSE(read.isRead);
    CHECK(ToText(read.value) == L"default");
    CHECK(read.type == 77);
    CHECK(read.keyClass == L"class");
}

TEST_CASE("reading an empty value makes the same calls, succeeds and keeps the caller's default") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"");
    RegistryWatch watch;
    ReadBack read;
    CHECK(watch.Calls([&] { read = ReadValue(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{
              R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x19))",
              R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
              R"(RegQueryInfoKeyA(key1, 512 NULs, 511))",
              R"(RegQueryValueExA(key1, "Value", type 0, 0 NULs, 0))",
              R"(RegCloseKey(key1))",
              R"(RegCloseKey(HKCU))",
          });
    CHECK(read.isRead);
    CHECK(ToText(read.value) == L"default");
    CHECK(read.type == REG_SZ);
}

TEST_CASE("a root that is no predefined one is closed by the read, unless the key could not be opened") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    const auto openRoot = [] {
        HKEY root = nullptr;
        REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &root) == ERROR_SUCCESS);
        return root;
    };
    HKEY root = openRoot();
    CHECK(ReadValue(root, L"Calvane\\Calls", L"Value").isRead);
    CHECK_FALSE(IsUsable(root));

    root = openRoot();
    CHECK_FALSE(ReadValue(root, L"Calvane\\Calls", L"Missing").isRead);
    CHECK_FALSE(IsUsable(root));

    root = openRoot();
    CHECK_FALSE(ReadValue(root, L"Calvane\\Missing", L"Value").isRead);
    CHECK(IsUsable(root));
    RegCloseKey(root);
}

TEST_CASE("a predefined root can be read from again and again") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    for (int i = 0; i < 3; ++i)
        CHECK(ReadValue(HKEY_CURRENT_USER, kKey, L"Value").isRead);
}

TEST_CASE("the read returns the class that the key was created with") {
    const TestHive hive(HKEY_CURRENT_USER);
    const Registry registry;
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"Window settings", L"Value", L"abc", REG_SZ));
    CHECK(ReadValue(HKEY_CURRENT_USER, kKey, L"Value").keyClass == L"Window settings");
    // Also beside a value that is missing.
    CHECK(ReadValue(HKEY_CURRENT_USER, kKey, L"Missing").keyClass == L"Window settings");
}

TEST_CASE("a class longer than the buffer is cut and does not hinder the read") {
    const TestHive hive(HKEY_CURRENT_USER);
    REQUIRE(Registry().Save(HKEY_CURRENT_USER, kKey, std::wstring(600, L'c'), L"Value", L"abc", REG_SZ));
    const ReadBack read = ReadValue(HKEY_CURRENT_USER, kKey, L"Value");
    CHECK(read.isRead);
    CHECK(ToText(read.value) == L"abc");
    CHECK(read.keyClass.size() <= 512);
    CHECK(read.keyClass.find_first_not_of(L"c\0"s) == std::wstring::npos);
}

TEST_CASE("value names and keys are found in any case") {
    const TestHive hive(HKEY_CURRENT_USER);
    const Registry registry;
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"", L"1Url", L"address", REG_SZ));
    CHECK(ToText(ReadValue(HKEY_CURRENT_USER, L"SOFTWARE\\calvane\\CALLS", L"1URL").value) == L"address");
    REQUIRE(registry.Save(HKEY_CURRENT_USER, kKey, L"", L"1URL", L"another", REG_SZ));
    CHECK(hive.ValueCount(kKey) == 1);
    CHECK(registry.Delete(HKEY_CURRENT_USER, kKey, L"1url"));
    CHECK(hive.ValueCount(kKey) == 0);
}
