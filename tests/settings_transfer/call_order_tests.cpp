#include <string>
#include <vector>

#include "store/settings_schema.h"
#include "tests/settings_transfer/registry_log.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Lines = std::vector<std::string>;

void StoreBanner(const SettingsWindow& page, int n, const wchar_t* name, const wchar_t* width,
                 const wchar_t* height, const wchar_t* use) {
    const std::wstring number = std::to_wstring(n);
    page.user.Write(Schema::kBannersKey, number + L"Name", name);
    page.user.Write(Schema::kBannersKey, number + L"Width", width);
    page.user.Write(Schema::kBannersKey, number + L"Height", height);
    page.user.Write(Schema::kBannersKey, number + L"Use", use);
}

void StoreSearch(const SettingsWindow& page, int n, const wchar_t* name, const wchar_t* url,
                 const wchar_t* use) {
    const std::wstring number = std::to_wstring(n);
    page.user.Write(Schema::kSearchKey, number + L"Name", name);
    page.user.Write(Schema::kSearchKey, number + L"Url", url);
    page.user.Write(Schema::kSearchKey, number + L"Use", use);
}

}  // namespace

TEST_CASE("a load reads the controls in their order, each list to its end, then the rest") {
    SettingsWindow page;
    page.Store(L"Startup", L"Manual");
    page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
    page.user.Write(Schema::kExcludeKey, L"1", L"http://b.example");
    StoreBanner(page, 1, L"Full", L"468", L"60", L"True");
    StoreSearch(page, 1, L"One", L"http://one.example/?q=", L"False");
    const RegistryLog log;
    page.transfer.LoadSettings();
    CHECK(log.lines == Lines{
                           "read Settings\\chkPlaySound",
                           "read Settings\\chkBeep",
                           "read Settings\\txtSpeed",
                           "read Settings\\txtPause",
                           "read Exclude\\0",
                           "read Exclude\\1",
                           "read Exclude\\2",
                           "read Banners\\1Name",
                           "read Banners\\1Height",
                           "read Banners\\1Width",
                           "read Banners\\1Use",
                           "read Banners\\2Name",
                           "read Search\\1Name",
                           "read Search\\1URL",
                           "read Search\\1Use",
                           "read Search\\2Name",
                           "read Settings\\chkExtra",
                           "read Settings\\txtExtra",
                           "read Settings\\Startup",
                           "read Settings\\Pause Key",
                           "read Settings\\SoundFile",
                       });
}

TEST_CASE(
    "a save writes the controls in their order, each list deleted and rewritten in one visit, then the "
    "rest") {
    SettingsWindow page;
    page.Store(L"Startup", L"Manual");
    page.user.Write(Schema::kExcludeKey, L"0", L"http://old.example");
    page.user.Write(Schema::kExcludeKey, L"1", L"http://older.example");
    StoreBanner(page, 1, L"Full", L"468", L"60", L"True");
    StoreBanner(page, 2, L"Half", L"234", L"60", L"False");
    StoreSearch(page, 1, L"One", L"http://one.example/?q=", L"True");
    page.transfer.LoadSettings();
    SettingsWindow::Click(page.chkPlaySound);
    page.txtSpeed.Text(L"10");
    page.txtPause.Text(L"12");
    page.lstExclude.Clear();
    page.lstExclude.AddItem(L"http://new.example");
    page.lvwBanners.Remove(1);
    page.lvwSearchURLs.Add(2, L"Two");
    page.lvwSearchURLs.SubItem(2, 1, L"http://two.example/?q=");
    page.chkExtra.Value(1);
    page.txtExtra.Text(L" some text ");
    page.popupNotice.m_strSoundFile = L"C:\\a.wav";
    page.cboPauseKey.Text(L"F7");
    SettingsWindow::Click(page.optStartup);

    const RegistryLog log;
    page.transfer.SaveSettings();
    CHECK(log.lines ==
          Lines{
              "write Settings\\chkPlaySound=1",
              "write Settings\\chkBeep=0",
              "write Settings\\txtSpeed=200",
              "write Settings\\txtPause=12000",
              "delete Exclude\\0",
              "delete Exclude\\1",
              "delete Exclude\\2 (missing)",
              "write Exclude\\0=http://new.example",
              "delete Banners\\1Name",
              "delete Banners\\1Width",
              "delete Banners\\1Height",
              "delete Banners\\1Use",
              "delete Banners\\2Name",
              "delete Banners\\2Width",
              "delete Banners\\2Height",
              "delete Banners\\2Use",
              "delete Banners\\3Name (missing)",
              "delete Banners\\3Width (missing)",
              "delete Banners\\3Height (missing)",
              "delete Banners\\3Use (missing)",
              "write Banners\\1Name=Half",
              "write Banners\\1Width=234",
              "write Banners\\1Height=60",
              "write Banners\\1Use=False",
              "delete Search\\1Name",
              "delete Search\\1URL",
              "delete Search\\1Use",
              "delete Search\\2Name (missing)",
              "delete Search\\2URL (missing)",
              "delete Search\\2Use (missing)",
              "write Search\\1Name=One",
              "write Search\\1URL=http://one.example/?q=",
              "write Search\\1Use=True",
              "write Search\\2Name=Two",
              "write Search\\2URL=http://two.example/?q=",
              "write Search\\2Use=False",
              "write Settings\\chkExtra=1",
              "write Settings\\txtExtra= some text ",
              "write Settings\\SoundFile=C:\\a.wav",
              "write Settings\\Pause Key=F7",
              "write Settings\\Startup=Startup",
              "write Run\\Calvane Config Manager=C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe",
          });
}

TEST_CASE("a text that is no number, or too great a one, is not written") {
    struct Row {
        const wchar_t* text;
        const char* pause;  // null: nothing is written
        const char* speed;
    };
    const Row rows[] = {
        {L"5", "5000", "1200"},
        {L"2.5", "2000", "1800"},
        {L"3.5", "4000", "1400"},
        {L"30", "30000", "1000"},
        {L"0", "0", "1000"},
        {L"-1", "-1000", "1000"},
        {L"2147483", "2147483000", "1000"},
        {L"2147484", nullptr, "1000"},
        {L"-2147484", nullptr, "1000"},
        {L"2147483648", nullptr, nullptr},
        {L"1e400", nullptr, nullptr},
        {L"", nullptr, nullptr},
        {L" ", nullptr, nullptr},
        {L"five", nullptr, nullptr},
        {L"5 s", nullptr, nullptr},
        {L" 7 ", "7000", "800"},
        {L"11", "11000", "1000"},
    };
    SettingsWindow page;
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.text));
        page.txtPause.Text(row.text);
        page.txtSpeed.Text(row.text);
        const RegistryLog log;
        page.transfer.SaveSettings();
        Lines written;
        for (const std::string& line : log.lines) {
            if (line.starts_with("write Settings\\txtPause") ||
                line.starts_with("write Settings\\txtSpeed")) {
                written.push_back(line);
            }
        }
        Lines expected;
        if (row.speed != nullptr) expected.push_back("write Settings\\txtSpeed=" + std::string(row.speed));
        if (row.pause != nullptr) expected.push_back("write Settings\\txtPause=" + std::string(row.pause));
        CHECK(written == expected);
    }
}
