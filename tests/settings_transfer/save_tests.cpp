// What a load and a save read and write, in which order, and what a save leaves in the store.
#include <functional>
#include <string>
#include <vector>

#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/support/other_process.h"
#include "tests/support/registry_calls.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

using namespace Schema;
using Lines = std::vector<std::string>;

namespace {

// What is read, written and deleted, one behind the other.
std::string Sequence(RegistryCalls& calls, const std::function<void()>& body) {
    calls.Watch(body);
    std::string sequence;
    for (const std::string& line : calls.Values())
        sequence += line + "; ";
    return sequence;
}

// What a save writes of the speed and the pause, which stand in this order.
Lines NumbersSaved(SettingsWindow& page, RegistryCalls& calls) {
    calls.Watch([&] { page.transfer.SaveSettings(); });
    Lines lines = calls.Values();
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("write Settings\\txt"); });
    std::erase_if(lines,
                  [](const std::string& line) { return line.starts_with("write Settings\\txtExtra"); });
    return lines;
}

}  // namespace

TEST_CASE_FIXTURE(SettingsWindow,
                  "a load reads the controls in their order, each list to its end, then the rest") {
    Write(kSettingsKey, {{L"Startup", L"Manual"}});
    Write(kExcludeKey, {{L"0", L"http://a"}, {L"1", L"http://b"}});
    Write(kBannersKey, {{L"1Name", L"Full"}, {L"1Width", L"468"}, {L"1Height", L"60"}, {L"1Use", L"True"}});
    Write(kSearchKey, {{L"1Name", L"One"}, {L"1Url", L"http://one"}, {L"1Use", L"False"}});
    RegistryCalls calls;
    const std::string sequence = Sequence(calls, [this] { transfer.LoadSettings(); });
    CHECK(sequence ==
          "read Settings\\chkPlaySound; read Settings\\chkBeep; read Settings\\txtSpeed; "
          "read Settings\\txtPause; read Exclude\\0; read Exclude\\1; read Exclude\\2; "
          "read Banners\\1Name; read Banners\\1Height; read Banners\\1Width; read Banners\\1Use; "
          "read Banners\\2Name; read Search\\1Name; read Search\\1URL; read Search\\1Use; "
          "read Search\\2Name; read Settings\\chkExtra; read Settings\\txtExtra; read Settings\\Startup; "
          "read Settings\\Pause Key; read Settings\\SoundFile; ");
}

TEST_CASE_FIXTURE(
    SettingsWindow,
    "a save writes the controls in their order as text, each list deleted and rewritten in one visit, "
    "then the rest") {
    Write(kSettingsKey, {{L"Startup", L"Manual"}});
    Write(kExcludeKey, {{L"0", L"http://old"}, {L"1", L"http://older"}});
    Write(kBannersKey, {{L"1Name", L"Full"},
                        {L"1Width", L"468"},
                        {L"1Height", L"60"},
                        {L"1Use", L"True"},
                        {L"2Name", L"Half"},
                        {L"2Width", L"234"},
                        {L"2Height", L"60"},
                        {L"2Use", L"False"}});
    Write(kSearchKey, {{L"1Name", L"One"}, {L"1Url", L"http://one"}, {L"1Use", L"True"}});
    transfer.LoadSettings();
    Click(chkPlaySound);
    txtSpeed.Text(L"10");
    txtPause.Text(L"12");
    lstExclude.Clear();
    lstExclude.AddItem(L"http://new");
    lvwBanners.Remove(1);
    lvwSearchURLs.Add(2, L"Two");
    lvwSearchURLs.SubItem(2, 1, L"http://two");
    chkExtra.Value(1);
    txtExtra.Text(L" some text ");
    popupNotice.m_strSoundFile = L"C:\\a.wav";
    cboPauseKey.Text(L"F7");
    Click(optStartup);
    RegistryCalls calls;
    const std::string sequence = Sequence(calls, [this] { transfer.SaveSettings(); });
    CHECK(sequence ==
          "write Settings\\chkPlaySound=1; write Settings\\chkBeep=0; write Settings\\txtSpeed=200; "
          "write Settings\\txtPause=12000; delete Exclude\\0; delete Exclude\\1; "
          "delete Exclude\\2 (missing); write Exclude\\0=http://new; delete Banners\\1Name; "
          "delete Banners\\1Width; delete Banners\\1Height; delete Banners\\1Use; delete Banners\\2Name; "
          "delete Banners\\2Width; delete Banners\\2Height; delete Banners\\2Use; "
          "delete Banners\\3Name (missing); delete Banners\\3Width (missing); "
          "delete Banners\\3Height (missing); delete Banners\\3Use (missing); write Banners\\1Name=Half; "
          "write Banners\\1Width=234; write Banners\\1Height=60; write Banners\\1Use=False; "
          "delete Search\\1Name; delete Search\\1URL; delete Search\\1Use; "
          "delete Search\\2Name (missing); delete Search\\2URL (missing); delete Search\\2Use (missing); "
          "write Search\\1Name=One; write Search\\1URL=http://one; write Search\\1Use=True; "
          "write Search\\2Name=Two; write Search\\2URL=http://two; write Search\\2Use=False; "
          "write Settings\\chkExtra=1; write Settings\\txtExtra= some text ; "
          "write Settings\\SoundFile=C:\\a.wav; write Settings\\Pause Key=F7; "
          "write Settings\\Startup=Startup; "
          "write Run\\Calvane Config Manager=C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe; ");
}

TEST_CASE(
    "a typed level of 11 is saved as 1000, a pause as its whole number; what is none, or too great, is not "
    "written") {
    struct Row {
        const wchar_t* text;
        const char* pause;  // null: nothing is written
        const char* speed;
    };
    const Row rows[] = {{L"5", "5000", "1200"},
                        {L"2.5", "2000", "1800"},
                        {L"3.5", "4000", "1400"},
                        {L"30", "30000", "1000"},
                        {L"0", "0", "1000"},
                        {L"-1", "-1000", "1000"},
                        {L"2147483", "2147483000", "1000"},
                        {L"-2147483", "-2147483000", "1000"},
                        {L"2147484", nullptr, "1000"},
                        {L"-2147484", nullptr, "1000"},
                        {L"2147483648", nullptr, nullptr},
                        {L"1e400", nullptr, nullptr},
                        {L"", nullptr, nullptr},
                        {L" ", nullptr, nullptr},
                        {L"five", nullptr, nullptr},
                        {L"5 s", nullptr, nullptr},
                        {L" 7 ", "7000", "800"},
                        {L"11", "11000", "1000"}};
    SettingsWindow page;
    RegistryCalls calls;
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.text));
        page.txtPause.Text(row.text);
        page.txtSpeed.Text(row.text);
        Lines expected;
        if (row.speed != nullptr) expected.push_back("write Settings\\txtSpeed=" + std::string(row.speed));
        if (row.pause != nullptr) expected.push_back("write Settings\\txtPause=" + std::string(row.pause));
        CHECK(NumbersSaved(page, calls) == expected);
    }
}

TEST_CASE_FIXTURE(SettingsWindow, "exclude rows behind a gap stay in the store") {
    Write(kExcludeKey, {{L"0", L"row 0"}, {L"1", L"row 1"}, {L"3", L"row 3"}});
    transfer.LoadSettings();
    CHECK(ListBoxRows(lstExclude.Hwnd()) == Rows{L"row 0", L"row 1"});
    lstExclude.RemoveItem(0);
    lstExclude.AddItem(L"new");
    transfer.SaveSettings();
    CHECK(user.Text(kExcludeKey, L"0") == L"row 1");
    CHECK(user.Text(kExcludeKey, L"1") == L"new");
    CHECK(user.Text(kExcludeKey, L"3") == L"row 3");
    CHECK(user.ValueCount(kExcludeKey) == 3);
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "a stored list is deleted to its first entry without a use, whether or not it has names") {
    Write(kBannersKey,
          {{L"1Name", L"1"}, {L"1Width", L"1"}, {L"1Height", L"1"}, {L"2Name", L"2"}, {L"2Use", L"2"}});
    Write(kSearchKey, {{L"1Use", L"1"}, {L"2Name", L"1"}, {L"2URL", L"1"}, {L"2Use", L"1"}});
    transfer.SaveSettings();
    CHECK(user.ValueCount(kBannersKey) == 2);
    CHECK(user.Exists(kBannersKey, L"2Name"));
    CHECK(user.ValueCount(kSearchKey) == 0);
}

TEST_CASE_FIXTURE(SettingsWindow, "a load and a save leave the store of a first run as it was") {
    WriteFirstRunDefaults();
    Write(kExcludeKey, {{L"0", L"http://a"}});
    transfer.LoadSettings();
    transfer.SaveSettings();
    const SettingsWindow::Values settings = {{L"chkPlaySound", L"1"},  {L"chkBeep", L"0"},
                                             {L"txtPause", L"5000"},   {L"txtSpeed", L"1000"},
                                             {L"Pause Key", L"Shift"}, {L"Startup", L"RunOnly"}};
    for (const auto& [name, text] : settings)
        CHECK(Stored(name) == text);
    CHECK(user.ValueCount(kBannersKey) == 16);
    CHECK(user.ValueCount(kSearchKey) == 18);
    CHECK(user.ValueCount(kExcludeKey) == 1);
    CHECK_FALSE(machine.Exists(kRunKey, kRunValue));
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "a save ends with a marked change, sets the sound buttons and leaves the loading flag") {
    transfer.LoadSettings();
    CHECK_FALSE(cmdApply.Enabled());
    cmdTestSound.Enabled(true);
    transfer.SaveSettings();
    CHECK(cmdApply.Enabled());
    CHECK_FALSE(cmdTestSound.Enabled());
    for (const bool loading : {true, false}) {
        changeMark.m_bLoading = loading;
        transfer.SaveSettings();
        CHECK(changeMark.m_bLoading == loading);
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "lists under other names, the log and the link are neither loaded nor stored") {
    Write(kExcludeKey, {{L"0", L"http://a.example"}});
    lstExtra.AddItem(L"kept");
    lvwExtra.Add(1, L"kept");
    lblNavSite.Caption(L"http://www.calvane.example/");
    transfer.LoadSettings();
    CHECK(lstExtra.ListCount() == 1);
    CHECK(lvwExtra.Count() == 1);
    CHECK(lblNavSite.Caption() == L"http://www.calvane.example/");
    lstExclude.Clear();
    lstClosedWnd.AddItem(L"http://closed");
    transfer.SaveSettings();
    CHECK(user.ValueCount(kExcludeKey) == 0);
    CHECK_FALSE(user.Exists(kBannersKey));
    CHECK_FALSE(HasStored(L"lstClosedWnd"));
}

TEST_CASE_FIXTURE(SettingsWindow, "without a chosen pause key an empty one is stored") {
    transfer.SaveSettings();
    CHECK(Stored(L"Pause Key").empty());
}
