// The defaults that a fresh installation gets, and the order in which they are written.
#include "store/first_run.h"

#include <doctest.h>

#include "store/registry.h"
#include "tests/store/defaults.h"
#include "tests/store/registry_watch.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

TEST_CASE("an empty store gets exactly the 46 defaults, and no exclude list") {
    const TestHive hive(HKEY_CURRENT_USER);
    WriteFirstRunDefaults();
    CheckExactlyTheDefaults(hive);
}

TEST_CASE("the defaults are written one by one in their order, the mark last, each once") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    Lines expected{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Settings", 0, 0x19))"};
    for (const std::string& line : WritesOf(Defaults(), 1))
        expected.push_back(line);
    const Lines lines = watch.Calls(&WriteFirstRunDefaults);
    REQUIRE(lines.size() == expected.size());
    for (size_t i = 0; i < expected.size(); ++i)
        CHECK(lines[i] == expected[i]);
    CHECK(watch.LinesOf("RegSetValueExA").size() == kWrites);
}

TEST_CASE("a second start reads the mark and writes nothing") {
    const TestHive hive(HKEY_CURRENT_USER);
    WriteFirstRunDefaults();
    hive.Delete(kSettings, L"txtPause");
    hive.Write(kBanners, L"1Use", L"False");
    RegistryWatch watch;
    CHECK(watch.Calls(&WriteFirstRunDefaults) ==
          Lines{
              R"(RegOpenKeyExA(HKCU, "Software\Calvane\Settings", 0, 0x19))",
              R"(RegQueryValueExA(key1, "First Time", type 0, 0 NULs, 0))",
              R"(RegQueryInfoKeyA(key1, 512 NULs, 511))",
              R"(RegQueryValueExA(key1, "First Time", type 0, 4 NULs, 4))",
              R"(RegCloseKey(key1))",
              R"(RegCloseKey(HKCU))",
          });
    CHECK_FALSE(hive.Exists(kSettings, L"txtPause"));
    CHECK(hive.Text(kBanners, L"1Use") == L"False");
}

TEST_CASE("the mark counts by its presence alone, whatever it holds") {
    struct Row {
        DWORD type;
        std::string bytes;
    };
    const Row rows[] = {
        {REG_SZ, "True"},
        {REG_SZ, "False"},
        {REG_SZ, ""},
        {REG_SZ, "\0"s},
        {REG_SZ, "0"},
        {REG_EXPAND_SZ, "%x%"},
        {REG_BINARY, "\0\x01"s},
        {REG_BINARY, ""},
        {REG_MULTI_SZ, ""},
        {REG_DWORD, "\0\0\0\0"s},
        {REG_DWORD, ""},
        {REG_DWORD, "\x01"s},
        {REG_NONE, ""},
        {REG_DWORD_BIG_ENDIAN, "1"},
        {11, "12345678"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.type);
        CAPTURE(row.bytes.size());
        const TestHive hive(HKEY_CURRENT_USER);
        hive.Write(kSettings, L"First Time", row.type, row.bytes);
        WriteFirstRunDefaults();
        CHECK(hive.ValueCount(kSettings) == 1);
        CHECK(hive.Bytes(kSettings, L"First Time") == row.bytes);
        CHECK_FALSE(hive.Exists(kBanners));
        CHECK_FALSE(hive.Exists(kSearch));
        CHECK_FALSE(hive.Exists(kExclude));
    }
}

TEST_CASE("without the mark every default is written over what is there, and further entries survive") {
    const TestHive hive(HKEY_CURRENT_USER);
    for (const Default& row : Defaults())
        hive.Write(row.key, row.name, REG_DWORD, "\x01\x02\x03\x04");
    hive.Delete(kSettings, L"First Time");
    hive.Write(kBanners, L"5Name", L"My size");
    hive.Write(kBanners, L"5Width", L"10");
    hive.Write(kSearch, L"7Name", L"My engine");
    hive.Write(kExclude, L"0", L"http://example.com");
    hive.Write(kSettings, L"Another", L"value");

    WriteFirstRunDefaults();
    CheckAllDefaults(hive);
    CHECK(hive.Text(kBanners, L"5Name") == L"My size");
    CHECK(hive.Text(kBanners, L"5Width") == L"10");
    CHECK(hive.ValueCount(kBanners) == 18);
    CHECK(hive.Text(kSearch, L"7Name") == L"My engine");
    CHECK(hive.ValueCount(kSearch) == 19);
    CHECK(hive.Text(kSettings, L"Another") == L"value");
    CHECK(hive.Text(kExclude, L"0") == L"http://example.com");
    CHECK(hive.ValueCount(kExclude) == 1);
}

TEST_CASE("a settings key without the mark is a first run as well") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kSettings, L"chkBeep", L"1");
    RegistryWatch watch;
    const Lines lines = watch.Calls(&WriteFirstRunDefaults);
    const Lines writes = WritesOf(Defaults(), 2);
    // The five calls of the read that found no mark come first.
    REQUIRE(lines.size() == 5 + writes.size());
    CHECK(Lines(lines.begin() + 5, lines.end()) == writes);
    CheckExactlyTheDefaults(hive);
}

TEST_CASE("the first search address, written as 1Url, is found as 1URL") {
    const TestHive hive(HKEY_CURRENT_USER);
    WriteFirstRunDefaults();
    Variant address;
    long type = 0;
    std::wstring keyClass;
    CHECK(Registry().Read(HKEY_CURRENT_USER, kSearch, L"1URL", address, type, keyClass));
    CHECK(ToText(address) == L"http://search.yahoo.com/bin/search?p=");
}

namespace {

DWORD WINAPI InRoot(HMODULE, LPWSTR path, DWORD size) {
    constexpr wchar_t kPath[] = L"C:\\server.exe";
    wcsncpy(path, kPath, size);
    return static_cast<DWORD>(wcslen(kPath));
}

}  // namespace

TEST_CASE("a server in a drive's root gets a sound file with a doubled separator") {
    const TestHive hive(HKEY_CURRENT_USER);
    const ImportPatch patch("kernel32.dll", "GetModuleFileNameW", &InRoot);
    WriteFirstRunDefaults();
    CHECK(hive.Text(kSettings, L"SoundFile") == L"C:\\\\Arc.wav");
}
