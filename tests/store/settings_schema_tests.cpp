// The names under which everything is stored.
#include "store/settings_schema.h"

#include <doctest.h>

#include "tests/store/defaults.h"

using namespace std::string_literals;

TEST_CASE("the schema names the keys and values as they are stored") {
    CHECK(Schema::kSettingsKey == std::wstring(kSettings));
    CHECK(Schema::kExcludeKey == std::wstring(kExclude));
    CHECK(Schema::kBannersKey == std::wstring(kBanners));
    CHECK(Schema::kSearchKey == std::wstring(kSearch));
    CHECK(Schema::kRunKey == L"Software\\Microsoft\\Windows\\CurrentVersion\\Run"s);
    CHECK(Schema::kRunValue == L"Calvane Config Manager"s);
    CHECK(Schema::kTextType == 1);
    CHECK(Schema::kUrl == L"Url"s);
    CHECK(Schema::kURL == L"URL"s);
    CHECK(Schema::kManualMode == L"Manual"s);
    CHECK(Schema::kStartupMode == L"Startup"s);
}

TEST_CASE("a numbered name is the number without leading zeros, and the word") {
    CHECK(Schema::Numbered(0, L"") == L"0");
    CHECK(Schema::Numbered(1, Schema::kName) == L"1Name");
    CHECK(Schema::Numbered(12, Schema::kWidth) == L"12Width");
    CHECK(Schema::Numbered(10000, Schema::kUse) == L"10000Use");
}
