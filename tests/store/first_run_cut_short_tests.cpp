// A first run that ends midway, or whose writes fail.
#include <doctest.h>

#include "store/first_run.h"
#include "tests/store/defaults.h"
#include "tests/store/registry_watch.h"
#include "tests/support/test_hive.h"

namespace {

// No error that could be passed over.
struct ProcessEnd {};

}  // namespace

TEST_CASE("a run that ends at any write is repeated in full by the next start") {
    const std::vector<Default> defaults = Defaults();
    for (const char* const function : {"RegCreateKeyExA", "RegSetValueExA"}) {
        for (int k = 1; k <= kWrites; ++k) {
            CAPTURE(function);
            CAPTURE(k);
            const TestHive hive(HKEY_CURRENT_USER);
            RegistryWatch watch;
            watch.beforeCall = [&](const std::string& line) {
                if (line.starts_with(function) && watch.LinesOf(function).size() == static_cast<size_t>(k)) {
                    throw ProcessEnd();
                }
            };
            CHECK_THROWS_AS(watch.Calls(&WriteFirstRunDefaults), ProcessEnd);
            watch.beforeCall = nullptr;
            for (int i = 0; i < kWrites; ++i) {
                const Default& row = defaults[static_cast<size_t>(i)];
                CHECK(hive.Exists(row.key, row.name) == (i < k - 1));
            }

            watch.Calls(&WriteFirstRunDefaults);
            CHECK(watch.LinesOf("RegSetValueExA").size() == kWrites);
            CheckExactlyTheDefaults(hive);
        }
    }
}

TEST_CASE("a store that stops taking writes at any point is filled by the next start") {
    for (int k = 1; k <= kWrites; ++k) {
        CAPTURE(k);
        const TestHive hive(HKEY_CURRENT_USER);
        RegistryWatch watch;
        watch.FailFrom("RegCreateKeyExA", k, ERROR_ACCESS_DENIED);
        watch.Calls(&WriteFirstRunDefaults);
        CHECK(watch.LinesOf("RegCreateKeyExA").size() == kWrites);
        CHECK_FALSE(hive.Exists(kSettings, L"First Time"));

        watch.FailNothing();
        watch.Calls(&WriteFirstRunDefaults);
        CHECK(watch.LinesOf("RegSetValueExA").size() == kWrites);
        CheckExactlyTheDefaults(hive);
    }
}

TEST_CASE("one write that fails is passed over, and the others are made") {
    const std::vector<Default> defaults = Defaults();
    for (const char* const function : {"RegCreateKeyExA", "RegSetValueExA"}) {
        for (int k = 1; k <= kWrites; ++k) {
            CAPTURE(function);
            CAPTURE(k);
            const TestHive hive(HKEY_CURRENT_USER);
            RegistryWatch watch;
            watch.FailOnce(function, k, ERROR_NOT_ENOUGH_MEMORY);
            watch.Calls(&WriteFirstRunDefaults);
            for (int i = 0; i < kWrites; ++i) {
                const Default& row = defaults[static_cast<size_t>(i)];
                CHECK(hive.Exists(row.key, row.name) == (i != k - 1));
            }
        }
    }
}

TEST_CASE("a store that cannot be written at all is tried in full at every start") {
    const TestHive hive(HKEY_CURRENT_USER);
    RegistryWatch watch;
    watch.FailFrom("RegCreateKeyExA", 1, ERROR_ACCESS_DENIED);
    for (int start = 0; start < 3; ++start) {
        watch.Calls(&WriteFirstRunDefaults);
        CHECK(watch.LinesOf("RegCreateKeyExA").size() == kWrites);
    }
    CHECK_FALSE(hive.Exists(L"Software\\Calvane"));
}

TEST_CASE("a mark that cannot be read is a missing one") {
    for (const LSTATUS error : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY,
                                ERROR_MORE_DATA, ERROR_KEY_DELETED}) {
        CAPTURE(error);
        const TestHive hive(HKEY_CURRENT_USER);
        WriteFirstRunDefaults();
        hive.Write(kSettings, L"txtPause", L"7000");
        RegistryWatch watch;
        watch.FailOnce("RegQueryValueExA", 2, error);
        watch.Calls(&WriteFirstRunDefaults);
        CHECK(hive.Text(kSettings, L"txtPause") == L"5000");
    }
}
