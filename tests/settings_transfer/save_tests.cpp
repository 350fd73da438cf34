#include <string>
#include <vector>

#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Rows = std::vector<std::wstring>;

// Refuses to write one value.
std::string g_refused;
LONG(WINAPI* g_setValue)(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD);

LONG WINAPI RefusingSetValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                             DWORD size) {
    if (g_refused == name) return ERROR_ACCESS_DENIED;
    return g_setValue(key, name, reserved, type, data, size);
}

}  // namespace

TEST_CASE("every value is written as text") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    page.lvwBanners.Add(1, L"Name");
    page.lvwBanners.Checked(1, true);
    page.txtExtra.Text(L"12");
    SettingsWindow::Click(page.optStartup);
    page.transfer.SaveSettings();
    for (const wchar_t* const value : {L"chkPlaySound", L"chkBeep", L"txtPause", L"txtSpeed", L"chkExtra",
                                       L"txtExtra", L"Pause Key", L"Startup"}) {
        CAPTURE(std::wstring(value));
        DWORD type = 0;
        const std::string bytes = page.user.Bytes(Schema::kSettingsKey, value, &type);
        CHECK(type == REG_SZ);
        CHECK(bytes.find('\0') == std::string::npos);
    }
    DWORD type = 0;
    CHECK(page.user.Bytes(Schema::kBannersKey, L"1Use", &type) == "True");
    CHECK(type == REG_SZ);
}

TEST_CASE("a pause of 2.5 is stored as 2000, one of 30 as 30000") {
    SettingsWindow page;
    page.Store(L"txtPause", L"2500");
    page.transfer.LoadSettings();
    CHECK(page.txtPause.Text() == L"2.5");
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"txtPause") == L"2000");
    page.txtPause.Text(L"30");
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"txtPause") == L"30000");
}

TEST_CASE("a typed level of 11 is saved as 1000") {
    SettingsWindow page;
    page.txtSpeed.Text(L"11");
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"txtSpeed") == L"1000");
}

TEST_CASE("a text that does not convert leaves what is stored") {
    SettingsWindow page;
    page.Store(L"txtPause", L"5000");
    page.Store(L"txtSpeed", L"800");
    page.txtPause.Text(L"soon");
    page.txtSpeed.Text(L"");
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"txtPause") == L"5000");
    CHECK(page.Stored(L"txtSpeed") == L"800");
}

TEST_CASE("saving an empty exclude list deletes the rows and writes none") {
    SettingsWindow page;
    page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
    page.user.Write(Schema::kExcludeKey, L"1", L"http://b.example");
    page.transfer.SaveSettings();
    CHECK(page.user.ValueCount(Schema::kExcludeKey) == 0);
}

TEST_CASE("exclude rows behind a gap stay in the store") {
    SettingsWindow page;
    for (const wchar_t* const n : {L"0", L"1", L"3"})
        page.user.Write(Schema::kExcludeKey, n, std::wstring(L"row ") + n);
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows() == Rows{L"row 0", L"row 1"});
    page.lstExclude.RemoveItem(0);
    page.lstExclude.AddItem(L"new");
    page.transfer.SaveSettings();
    CHECK(page.user.Text(Schema::kExcludeKey, L"0") == L"row 1");
    CHECK(page.user.Text(Schema::kExcludeKey, L"1") == L"new");
    CHECK(page.user.Text(Schema::kExcludeKey, L"3") == L"row 3");
    CHECK(page.user.ValueCount(Schema::kExcludeKey) == 3);
}

TEST_CASE("a stored list without its first use is deleted no further than that entry") {
    SettingsWindow page;
    const auto put = [&](const wchar_t* name) { page.user.Write(Schema::kBannersKey, name, L"1"); };
    for (const wchar_t* const name :
         {L"1Name", L"1Width", L"1Height", L"2Name", L"2Width", L"2Height", L"2Use"})
        put(name);
    page.transfer.SaveSettings();
    CHECK_FALSE(page.user.Exists(Schema::kBannersKey, L"1Name"));
    CHECK_FALSE(page.user.Exists(Schema::kBannersKey, L"1Width"));
    CHECK(page.user.Exists(Schema::kBannersKey, L"2Name"));
    CHECK(page.user.ValueCount(Schema::kBannersKey) == 4);
}

TEST_CASE("an entry without a name, but with a use, does not end the deletion") {
    SettingsWindow page;
    for (const wchar_t* const name : {L"1Use", L"2Name", L"2URL", L"2Use"})
        page.user.Write(Schema::kSearchKey, name, L"1");
    page.transfer.SaveSettings();
    CHECK(page.user.ValueCount(Schema::kSearchKey) == 0);
}

TEST_CASE("a load and a save leave the store as it was, apart from what is rounded") {
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
    page.transfer.LoadSettings();
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"chkPlaySound") == L"1");
    CHECK(page.Stored(L"chkBeep") == L"0");
    CHECK(page.Stored(L"txtPause") == L"5000");
    CHECK(page.Stored(L"txtSpeed") == L"1000");
    CHECK(page.Stored(L"Pause Key") == L"Shift");
    CHECK(page.Stored(L"Startup") == L"RunOnly");
    CHECK(page.user.ValueCount(Schema::kBannersKey) == 16);
    CHECK(page.user.ValueCount(Schema::kSearchKey) == 18);
    CHECK(page.user.ValueCount(Schema::kExcludeKey) == 1);
    const Rows search = SettingsWindow::Rows(page.lvwSearchURLs, 1);
    page.transfer.LoadSettings();
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == search);
    CHECK_FALSE(page.machine.Exists(Schema::kRunKey, Schema::kRunValue));
}

TEST_CASE("a value that cannot be written does not keep the others from being written") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    page.lstExclude.AddItem(L"http://a.example");
    page.lstExclude.AddItem(L"http://b.example");
    page.popupNotice.m_strSoundFile = L"a.wav";
    for (const char* const refused : {"chkPlaySound", "txtPause", "0", "SoundFile"}) {
        CAPTURE(std::string(refused));
        page.user.DeleteTree(Schema::kSettingsKey);
        page.user.DeleteTree(Schema::kExcludeKey);
        {
            const ImportPatch patch("advapi32.dll", "RegSetValueExA", &RefusingSetValue);
            g_setValue = patch.Original<decltype(g_setValue)>();
            g_refused = refused;
            page.transfer.SaveSettings();
        }
        CHECK(page.user.ValueCount(Schema::kSettingsKey) + page.user.ValueCount(Schema::kExcludeKey) == 9);
        CHECK_FALSE(page.user.Exists(g_refused == "0" ? Schema::kExcludeKey : Schema::kSettingsKey,
                                     std::wstring(g_refused.begin(), g_refused.end())));
    }
}

TEST_CASE("a save ends with a marked change and sets the sound buttons") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    CHECK_FALSE(page.cmdApply.Enabled());
    page.cmdTestSound.Enabled(true);
    page.transfer.SaveSettings();
    CHECK(page.cmdApply.Enabled());
    CHECK_FALSE(page.cmdTestSound.Enabled());
}

TEST_CASE("a save does not touch the loading flag") {
    SettingsWindow page;
    for (const bool loading : {true, false}) {
        page.changeMark.m_bLoading = loading;
        page.transfer.SaveSettings();
        CHECK(page.changeMark.m_bLoading == loading);
    }
}

TEST_CASE("the log and the lists under other names are not stored") {
    SettingsWindow page;
    page.lstClosedWnd.AddItem(L"http://closed.example");
    page.lstExtra.AddItem(L"extra");
    page.lvwExtra.Add(1, L"extra");
    page.transfer.SaveSettings();
    CHECK_FALSE(page.user.Exists(Schema::kExcludeKey));
    CHECK_FALSE(page.user.Exists(Schema::kBannersKey));
    CHECK_FALSE(page.HasStored(L"lstClosedWnd"));
}
