#include "tests/store/defaults.h"

#include <doctest.h>

#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/store/registry_watch.h"

std::vector<Default> Defaults() {
    return {
        {kSettings, L"chkBeep", L"0"},
        {kSettings, L"chkPlaySound", L"1"},
        {kSettings, L"chkStartup", L"1"},
        {kSettings, L"chkStopAds", L"True"},
        {kSettings, L"chkStopPop", L"True"},
        {kSettings, L"chkTray", L"1"},
        {kSettings, L"txtPause", L"5000"},
        {kSettings, L"txtSpeed", L"1000"},
        {kSettings, L"SoundFile", ServerDirectory() + L"\\Arc.wav"},
        {kBanners, L"1Name", L"Full Banner"},
        {kBanners, L"1Width", L"468"},
        {kBanners, L"1Height", L"60"},
        {kBanners, L"1Use", L"True"},
        {kBanners, L"2Name", L"Half Banner"},
        {kBanners, L"2Width", L"234"},
        {kBanners, L"2Height", L"60"},
        {kBanners, L"2Use", L"False"},
        {kBanners, L"3Name", L"Quarter Banner"},
        {kBanners, L"3Width", L"120"},
        {kBanners, L"3Height", L"60"},
        {kBanners, L"3Use", L"False"},
        {kBanners, L"4Name", L"Button"},
        {kBanners, L"4Width", L"88"},
        {kBanners, L"4Height", L"31"},
        {kBanners, L"4Use", L"False"},
        {kSearch, L"1Name", L"Yahoo"},
        {kSearch, L"1Url", L"http://search.yahoo.com/bin/search?p="},
        {kSearch, L"1Use", L"True"},
        {kSearch, L"2Name", L"Alta Vista"},
        {kSearch, L"2Url", L"http://www.altavista.com/sites/search/web?q="},
        {kSearch, L"2Use", L"True"},
        {kSearch, L"3Name", L"MSN"},
        {kSearch, L"3Url", L"http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q="},
        {kSearch, L"3Use", L"True"},
        {kSearch, L"4Name", L"Google"},
        {kSearch, L"4Url", L"http://www.google.com/search?q="},
        {kSearch, L"4Use", L"True"},
        {kSearch, L"5Name", L"Teoma"},
        {kSearch, L"5Url", L"http://s.teoma.com/search?q="},
        {kSearch, L"5Use", L"True"},
        {kSearch, L"6Name", L"Overture"},
        {kSearch, L"6Url", L"http://www.overture.com/d/search/?type=home&tm=1&Keywords="},
        {kSearch, L"6Use", L"True"},
        {kSettings, L"Startup", L"RunOnly"},
        {kSettings, L"Pause Key", L"Shift"},
        {kSettings, L"First Time", L"True"},
    };
}

std::vector<std::string> WritesOf(const std::vector<Default>& defaults, size_t firstKey) {
    std::vector<std::string> lines;
    for (const Default& row : defaults) {
        lines.push_back("RegCreateKeyExA(HKCU, " + Quoted(ToAnsi(row.key)) +
                        R"(, 0, "", 0, 0x2, {50, no descriptor, inherited}))");
        lines.push_back("RegSetValueExA(key" + std::to_string(firstKey++) + ", " + Quoted(ToAnsi(row.name)) +
                        ", 0, type 1, " + Quoted(ToAnsi(row.text)) + ", no NUL behind)");
    }
    return lines;
}

void CheckAllDefaults(const TestHive& hive) {
    for (const Default& row : Defaults()) {
        CAPTURE(ToAnsi(row.name));
        DWORD type = 0;
        REQUIRE(hive.Exists(row.key, row.name));
        CHECK(hive.Bytes(row.key, row.name, &type) == ToAnsi(row.text));
        CHECK(type == REG_SZ);
    }
}

void CheckExactlyTheDefaults(const TestHive& hive) {
    CheckAllDefaults(hive);
    CHECK(hive.ValueCount(kSettings) == 12);
    CHECK(hive.ValueCount(kBanners) == 16);
    CHECK(hive.ValueCount(kSearch) == 18);
    CHECK_FALSE(hive.Exists(kExclude));
}
