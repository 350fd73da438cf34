#include <windows.h>

#include <string>
#include <vector>

#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// What filling a list of this length may take beside its registry calls.
constexpr DWORD kControlMilliseconds = 2000;

DWORD MillisecondsOf(const auto& body) {
    const DWORD start = GetTickCount();
    body();
    return GetTickCount() - start;
}

// Reads or deletes and writes as the transfer does, without controls.
DWORD ReadingTime(const wchar_t* key, long count, std::initializer_list<const wchar_t*> fields) {
    return MillisecondsOf([&] {
        const Registry registry;
        Variant value(L"");
        long type = 0;
        std::wstring keyClass;
        for (long n = 1; n <= count; ++n) {
            for (const wchar_t* const field : fields) {
                registry.Read(HKEY_CURRENT_USER, key, Schema::Numbered(n, field), value, type, keyClass);
            }
        }
    });
}

}  // namespace

TEST_CASE("10,000 exclude rows are loaded and saved unchanged, at the price of their registry calls") {
    SettingsWindow page;
    std::vector<std::wstring> rows;
    for (int n = 0; n < 10000; ++n) {
        rows.push_back(L"http://site" + std::to_wstring(n * 7919 % 10000) + L".example");
        page.user.Write(Schema::kExcludeKey, std::to_wstring(n), rows.back());
    }
    const DWORD reading = ReadingTime(Schema::kExcludeKey, 9999, {L""});
    const DWORD loading = MillisecondsOf([&] { page.transfer.LoadSettings(); });
    MESSAGE("load " << loading << " ms, of which reads about " << reading << " ms");
    CHECK(loading < reading * 2 + kControlMilliseconds);
    CHECK(page.ExcludeRows() == rows);

    const DWORD saving = MillisecondsOf([&] { page.transfer.SaveSettings(); });
    MESSAGE("save " << saving << " ms");
    CHECK(saving < reading * 6 + kControlMilliseconds);
    CHECK(page.user.ValueCount(Schema::kExcludeKey) == 10000);
    page.lstExclude.Clear();
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows() == rows);
}

TEST_CASE("4,000 search addresses are loaded and saved unchanged, at the price of their registry calls") {
    SettingsWindow page;
    constexpr int kCount = 4000;
    for (int n = 1; n <= kCount; ++n) {
        const std::wstring number = std::to_wstring(n);
        page.user.Write(Schema::kSearchKey, number + L"Name", L"Engine " + number);
        page.user.Write(Schema::kSearchKey, number + L"URL", L"http://engine.example/" + number);
        page.user.Write(Schema::kSearchKey, number + L"Use", n % 3 == 0 ? L"True" : L"False");
    }
    const DWORD reading = ReadingTime(Schema::kSearchKey, kCount, {L"Name", L"URL", L"Use"});
    const DWORD loading = MillisecondsOf([&] { page.transfer.LoadSettings(); });
    MESSAGE("load " << loading << " ms, of which reads about " << reading << " ms");
    CHECK(loading < reading * 2 + kControlMilliseconds);
    const std::vector<std::wstring> rows = SettingsWindow::Rows(page.lvwSearchURLs, 1);
    REQUIRE(rows.size() == kCount);
    CHECK(rows[2999] == L"Engine 3000|http://engine.example/3000|x");
    CHECK(rows[3999] == L"Engine 4000|http://engine.example/4000|");

    const DWORD saving = MillisecondsOf([&] { page.transfer.SaveSettings(); });
    MESSAGE("save " << saving << " ms");
    CHECK(saving < reading * 6 + kControlMilliseconds);
    CHECK(page.user.ValueCount(Schema::kSearchKey) == 3 * kCount);
    page.transfer.LoadSettings();
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == rows);
}
