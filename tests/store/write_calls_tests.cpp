// Which registry calls a save and a deletion make, with which arguments, and which handles they leave open.
#include <doctest.h>

#include "store/registry.h"
#include "tests/store/registry_watch.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

namespace {

constexpr wchar_t kKey[] = L"Software\\Calvane\\Calls";

}  // namespace

TEST_CASE("saving creates the key, writes the value with nothing behind it, and leaves the key open") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    bool isSaved = false;
    CHECK(
        watch.Calls(
            [&] { isSaved = Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", L"abc", REG_SZ); }) ==
        Lines{
            R"(RegCreateKeyExA(HKCU, "Software\Calvane\Calls", 0, "", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "Value", 0, type 1, "abc", no NUL behind))",
        });
    CHECK(isSaved);
    CHECK(watch.OpenHandles() == Lines{"key1"});
    CHECK(RegSetValueExW(watch.Handle("key1"), L"More", 0, REG_SZ, nullptr, 0) == ERROR_SUCCESS);
    CHECK(hive.Exists(kKey, L"More"));
}

TEST_CASE("saving passes on the class, the root, the value name and the type") {
    const TestHive hive(HKEY_LOCAL_MACHINE);
    RegistryWatch watch;
    CHECK(
        watch.Calls([&] {
            CHECK(Registry().Save(HKEY_LOCAL_MACHINE, L"Software\\Deep\\Down", L"My class", L"", -2L,
                                  REG_DWORD));
        }) ==
        Lines{
            R"(RegCreateKeyExA(HKLM, "Software\Deep\Down", 0, "My class", 0, 0x2, {50, no descriptor, inherited}))",
            R"(RegSetValueExA(key1, "", 0, type 4, "\fe\ff\ff\ff", no NUL behind))",
        });
}

TEST_CASE("no type has a NUL behind what it counts") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    for (long type = 0; type <= 11; ++type) {
        CAPTURE(type);
        for (const std::wstring& text : {L"7"s, L"12345"s, L"1234567"s, L"123456789"s}) {
            watch.Calls([&] { CHECK(Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", text, type)); });
            CHECK(watch.Lines().at(1).ends_with(", no NUL behind)"));
        }
    }
}

TEST_CASE("each save makes two calls and leaves one more key open") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    const Lines lines = watch.Calls([&] {
        for (long row = 0; row < 100; ++row) {
            CHECK(Registry().Save(HKEY_CURRENT_USER, kKey, L"", std::to_wstring(row), row, REG_SZ));
        }
    });
    CHECK(lines.size() == 200);
    CHECK(watch.OpenHandles().size() == 100);
    CHECK(hive.ValueCount(kKey) == 100);
}

TEST_CASE("deleting a value opens the key for writing, deletes the value and closes the key") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    bool isDeleted = false;
    const Lines expected{
        R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x2))",
        R"(RegDeleteValueA(key1, "Value"))",
        R"(RegCloseKey(key1))",
    };
    CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value"); }) == expected);
    CHECK(isDeleted);
    CHECK_FALSE(hive.Exists(kKey, L"Value"));
}

TEST_CASE("deleting a missing value fails and closes the key") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Other", L"abc");
    RegistryWatch watch;
    bool isDeleted = true;
    CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{
              R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x2))",
              R"(RegDeleteValueA(key1, "Value"))",
              R"(RegCloseKey(key1))",
          });
    CHECK_FALSE(isDeleted);
    CHECK(hive.Exists(kKey, L"Other"));
}

TEST_CASE("deleting a value of a missing key fails after trying to open it, and creates no key") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    bool isDeleted = true;
    CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L"Value"); }) ==
          Lines{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Calls", 0, 0x2))"});
    CHECK_FALSE(isDeleted);
    CHECK_FALSE(hive.Exists(kKey));
}

TEST_CASE("deleting with an empty key path does nothing, with or without a value name") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(L"", L"Value", L"abc");
    RegistryWatch watch;
    for (const wchar_t* const name : {L"Value", L""}) {
        bool isDeleted = true;
        CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, L"", name); }).empty());
        CHECK_FALSE(isDeleted);
    }
    CHECK(hive.Exists(L"", L"Value"));
}

TEST_CASE("deleting with an empty value name removes the key with its values") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", L"abc");
    RegistryWatch watch;
    bool isDeleted = false;
    CHECK(watch.Calls([&] { isDeleted = Registry().Delete(HKEY_CURRENT_USER, kKey, L""); }) ==
          Lines{R"(RegDeleteKeyA(HKCU, "Software\Calvane\Calls"))"});
    CHECK(isDeleted);
    CHECK_FALSE(hive.Exists(kKey));
    CHECK(hive.Exists(L"Software\\Calvane"));
    CHECK_FALSE(Registry().Delete(HKEY_CURRENT_USER, kKey, L""));
}

TEST_CASE("a key with subkeys is not deleted") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(std::wstring(kKey) + L"\\Below", L"Value", L"abc");
    CHECK_FALSE(Registry().Delete(HKEY_CURRENT_USER, kKey, L""));
    CHECK(hive.Exists(std::wstring(kKey) + L"\\Below", L"Value"));
}
