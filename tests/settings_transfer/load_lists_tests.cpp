// What a load makes of the lists.
#include <windows.h>

#include <string>
#include <vector>

#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Rows = std::vector<std::wstring>;

}  // namespace

TEST_CASE("exclude rows are read from 0 to the first gap") {
    SettingsWindow page;
    page.lstExclude.AddItem(L"edited");
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows().empty());
    page.user.Write(Schema::kExcludeKey, L"0", L"http://zero.example");
    page.user.Write(Schema::kExcludeKey, L"1", L"http://one.example");
    page.user.Write(Schema::kExcludeKey, L"3", L"http://three.example");
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows() == Rows{L"http://zero.example", L"http://one.example"});
}

TEST_CASE("exclude rows stay in number order, not in the order of the alphabet") {
    SettingsWindow page;
    Rows expected;
    for (int n = 0; n < 12; ++n) {
        expected.push_back(L"site " + std::to_wstring(20 - n));
        page.user.Write(Schema::kExcludeKey, std::to_wstring(n), expected.back());
    }
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows() == expected);
}

TEST_CASE("banner sizes are read from 1 on, with name, width, height and use") {
    SettingsWindow page;
    page.lvwBanners.Add(1, L"edited");
    const auto put = [&](const wchar_t* name, const wchar_t* text) {
        page.user.Write(Schema::kBannersKey, name, text);
    };
    put(L"1Name", L"Full");
    put(L"1Width", L"468");
    put(L"1Height", L"60");
    put(L"1Use", L"True");
    put(L"2Name", L"Half");
    put(L"2Width", L"-2.5");
    put(L"2Height", L"1e3");
    put(L"2Use", L"False");
    SUBCASE("to the first missing name") {
        put(L"4Name", L"beyond the gap");
        put(L"4Use", L"True");
        page.transfer.LoadSettings();
        CHECK(SettingsWindow::Rows(page.lvwBanners, 2) == Rows{L"Full|468|60|x", L"Half|-2.5|1e3|"});
    }
    SUBCASE("to the first entry without a use, which is shown; its check mark comes from the width") {
        put(L"3Name", L"Third");
        put(L"3Width", L"0");
        put(L"3Height", L"7");
        put(L"4Name", L"Fourth");
        put(L"4Use", L"True");
        page.transfer.LoadSettings();
        CHECK(SettingsWindow::Rows(page.lvwBanners, 2) ==
              Rows{L"Full|468|60|x", L"Half|-2.5|1e3|", L"Third|0|7|"});
        put(L"3Width", L"100");
        page.transfer.LoadSettings();
        CHECK(SettingsWindow::Rows(page.lvwBanners, 2).at(2) == L"Third|100|7|x");
    }
    SUBCASE(
        "missing fields take over what was read before them, the height from the name, the width from the "
        "height") {
        put(L"3Name", L"Third");
        put(L"3Use", L"True");
        put(L"4Name", L"Fourth");
        put(L"4Height", L"9");
        put(L"4Use", L"True");
        put(L"5Name", L"Fifth");
        put(L"5Width", L"8");
        page.transfer.LoadSettings();
        const Rows rows = SettingsWindow::Rows(page.lvwBanners, 2);
        REQUIRE(rows.size() == 5);
        CHECK(rows[2] == L"Third|Third|Third|x");
        CHECK(rows[3] == L"Fourth|9|9|x");
        CHECK(rows[4] == L"Fifth|8|Fifth|x");
    }
    SUBCASE("with the uses that Automation takes for a Boolean") {
        const struct {
            const wchar_t* use;
            bool checked;
        } uses[] = {{L"True", true}, {L"False", false}, {L"true", true}, {L"FALSE", false}, {L"1", true},
                    {L"0", false},   {L"-1", true},     {L"yes", false}, {L"?", false}};
        for (const auto& use : uses) {
            CAPTURE(std::wstring(use.use));
            put(L"1Use", use.use);
            page.transfer.LoadSettings();
            CHECK(page.lvwBanners.Checked(1) == use.checked);
            CHECK(page.lvwBanners.Count() == 2);
        }
    }
}

TEST_CASE("search addresses are read from 1 on, whichever way their value is spelled") {
    SettingsWindow page;
    page.lvwSearchURLs.Add(1, L"edited");
    const auto put = [&](const wchar_t* name, const wchar_t* text) {
        page.user.Write(Schema::kSearchKey, name, text);
    };
    put(L"1Name", L"One");
    put(L"1Url", L"http://one.example/?q=");
    put(L"1Use", L"True");
    put(L"2Name", L"Two");
    put(L"2URL", L"http://two.example/?q=");
    put(L"2Use", L"False");
    put(L"3Name", L"Three");
    put(L"3URL", L"http://three.example/?q=");
    put(L"4Name", L"Four");
    page.transfer.LoadSettings();
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == Rows{L"One|http://one.example/?q=|x",
                                                              L"Two|http://two.example/?q=|",
                                                              L"Three|http://three.example/?q=|"});
}

TEST_CASE("a load sets the columns of the lists") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    const int width = page.lvwBanners.Width();
    CHECK(ListView_GetColumnWidth(page.lvwBanners.Hwnd(), 0) == width / 2);
    CHECK(std::abs(ListView_GetColumnWidth(page.lvwSearchURLs.Hwnd(), 1) - width * 68 / 100) <= 1);
}
