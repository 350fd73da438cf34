#include <windows.h>

#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Rows = std::vector<std::wstring>;

}  // namespace

TEST_CASE("every stored option is shown in its control") {
    SettingsWindow page;
    page.Store(L"chkPlaySound", L"1");
    page.Store(L"chkBeep", L"0");
    page.Store(L"txtPause", L"12000");
    page.Store(L"txtSpeed", L"400");
    page.Store(L"chkExtra", L"1");
    page.Store(L"txtExtra", L" as it stands ");
    page.Store(L"Pause Key", L"F9");
    page.Store(L"SoundFile", L"C:\\Sounds\\a.wav");
    page.Store(L"Startup", L"RunOnly");
    page.cmdTestSound.Enabled(false);
    page.cmdSoundFile.Enabled(false);
    page.transfer.LoadSettings();
    CHECK(page.chkPlaySound.Value() == 1);
    CHECK(page.chkBeep.Value() == 0);
    CHECK(page.txtPause.Text() == L"12");
    CHECK(page.txtSpeed.Text() == L"9");
    CHECK(page.chkExtra.Value() == 1);
    CHECK(page.txtExtra.Text() == L" as it stands ");
    CHECK(page.cboPauseKey.Text() == L"F9");
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\Sounds\\a.wav");
    CHECK(page.optLoadWithKiller.Value());
    CHECK(page.generalOptions.m_strStartupMode == L"RunOnly");
    CHECK(page.cmdSoundFile.Enabled());
    CHECK(page.cmdTestSound.Enabled());
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE("the first-run defaults are shown") {
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.transfer.LoadSettings();
    CHECK(page.chkPlaySound.Value() == 1);
    CHECK(page.chkBeep.Value() == 0);
    CHECK(page.txtPause.Text() == L"5");
    CHECK(page.txtSpeed.Text() == L"6");
    CHECK(page.cboPauseKey.Text() == L"Shift");
    CHECK(page.optLoadWithKiller.Value());
    CHECK(page.popupNotice.m_strSoundFile.ends_with(L"\\Arc.wav"));
    CHECK(page.ExcludeRows().empty());
    CHECK(SettingsWindow::Rows(page.lvwBanners, 2) ==
          Rows{L"Full Banner|468|60|x", L"Half Banner|234|60|", L"Quarter Banner|120|60|", L"Button|88|31|"});
    const Rows search = SettingsWindow::Rows(page.lvwSearchURLs, 1);
    REQUIRE(search.size() == 6);
    CHECK(search[0].starts_with(L"Yahoo|http://"));
    CHECK(search[0].ends_with(L"/bin/search?p=|x"));
    CHECK(search[5].ends_with(L"/d/search/?type=home&tm=1&Keywords=|x"));
}

TEST_CASE("an empty store leaves the controls as designed, with Manual and Shift chosen") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    CHECK(page.chkPlaySound.Value() == 0);
    CHECK(page.chkBeep.Value() == 0);
    CHECK(page.txtPause.Text() == L"5");
    CHECK(page.txtSpeed.Text() == L"6");
    CHECK(page.cboPauseKey.Text() == L"Shift");
    CHECK(page.optLoadFromMenu.Value());
    CHECK(page.popupNotice.m_strSoundFile.empty());
    CHECK_FALSE(page.cmdSoundFile.Enabled());
    CHECK_FALSE(page.cmdTestSound.Enabled());
    CHECK_FALSE(page.user.Exists(L"Software\\Calvane"));
}

TEST_CASE("a stored pause is shown in seconds, fractions too") {
    const struct {
        const wchar_t* stored;
        const wchar_t* shown;
    } rows[] = {{L"1500", L"1.5"}, {L"2500", L"2.5"}, {L"30000", L"30"},     {L"1", L"0.001"},
                {L"0", L"0"},      {L"-5000", L"-5"}, {L"5000.5", L"5.0005"}};
    for (const auto& row : rows) {
        CAPTURE(std::wstring(row.stored));
        SettingsWindow page;
        page.Store(L"txtPause", row.stored);
        page.transfer.LoadSettings();
        CHECK(page.txtPause.Text() == row.shown);
    }
}

TEST_CASE("a stored interval between the levels shows level 6, and level 6 is saved as 1000") {
    SettingsWindow page;
    page.Store(L"txtSpeed", L"1100");
    page.transfer.LoadSettings();
    CHECK(page.txtSpeed.Text() == L"6");
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"txtSpeed") == L"1000");
}

TEST_CASE("with both notices stored as checked the beep, visited last, wins") {
    SettingsWindow page;
    page.Store(L"chkPlaySound", L"1");
    page.Store(L"chkBeep", L"1");
    page.Store(L"SoundFile", L"a.wav");
    page.transfer.LoadSettings();
    CHECK(page.chkPlaySound.Value() == 0);
    CHECK(page.chkBeep.Value() == 1);
    CHECK_FALSE(page.cmdSoundFile.Enabled());
    CHECK_FALSE(page.cmdTestSound.Enabled());
}

TEST_CASE("a missing or empty value gives its control the text read before it, where that converts") {
    SUBCASE("a check box takes over the check box before it") {
        SettingsWindow page;
        page.Store(L"chkPlaySound", L"1");
        page.transfer.LoadSettings();
        CHECK(page.chkBeep.Value() == 1);
        CHECK(page.chkPlaySound.Value() == 0);
    }
    SUBCASE("an empty value counts as a missing one") {
        SettingsWindow page;
        page.Store(L"chkPlaySound", L"1");
        page.Store(L"chkBeep", L"");
        page.transfer.LoadSettings();
        CHECK(page.chkBeep.Value() == 1);
    }
    SUBCASE("the speed and the pause take over the last check box") {
        SettingsWindow page;
        page.Store(L"chkPlaySound", L"0");
        page.Store(L"chkBeep", L"1");
        page.transfer.LoadSettings();
        CHECK(page.txtSpeed.Text() == L"6");
        CHECK(page.txtPause.Text() == L"0.001");
    }
    SUBCASE("the pause takes over the speed") {
        SettingsWindow page;
        page.Store(L"txtSpeed", L"200");
        page.transfer.LoadSettings();
        CHECK(page.txtSpeed.Text() == L"10");
        CHECK(page.txtPause.Text() == L"0.2");
    }
    SUBCASE("a check box behind the lists keeps its state where the last search text does not convert") {
        SettingsWindow page;
        page.user.Write(Schema::kSearchKey, L"1Name", L"One");
        page.chkExtra.Value(1);
        page.transfer.LoadSettings();
        CHECK(page.chkExtra.Value() == 1);
        CHECK(page.txtExtra.Text() == L"One");
    }
    SUBCASE("nothing is taken over from the load before") {
        SettingsWindow page;
        page.Store(L"chkPlaySound", L"1");
        page.transfer.LoadSettings();
        page.user.DeleteTree(Schema::kSettingsKey);
        page.chkBeep.Value(0);
        page.transfer.LoadSettings();
        CHECK(page.chkBeep.Value() == 0);
    }
    SUBCASE("an empty exclude row repeats the row before it") {
        SettingsWindow page;
        page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
        page.user.Write(Schema::kExcludeKey, L"1", L"");
        page.user.Write(Schema::kExcludeKey, L"2", L"http://c.example");
        page.transfer.LoadSettings();
        CHECK(page.ExcludeRows() == Rows{L"http://a.example", L"http://a.example", L"http://c.example"});
    }
    SUBCASE("the pause key, the sound file and the mode take over nothing") {
        SettingsWindow page;
        page.Store(L"txtExtra", L"F6");
        page.transfer.LoadSettings();
        CHECK(page.cboPauseKey.Text() == L"Shift");
        CHECK(page.popupNotice.m_strSoundFile.empty());
        CHECK(page.optLoadFromMenu.Value());
    }
}

TEST_CASE(
    "the pause key: a stored item is chosen, a missing one gives Shift, another text, even an empty one, "
    "changes "
    "nothing") {
    SettingsWindow page;
    for (const wchar_t* const key : {L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"}) {
        page.Store(L"Pause Key", key);
        page.transfer.LoadSettings();
        CHECK(page.cboPauseKey.Text() == key);
    }
    for (const wchar_t* const key : {L"F12", L"F", L"F100", L" ", L"", L"Alt+F4"}) {
        CAPTURE(std::wstring(key));
        page.Store(L"Pause Key", key);
        page.transfer.LoadSettings();
        CHECK(page.cboPauseKey.Text() == L"F10");
    }
    page.user.Delete(Schema::kSettingsKey, L"Pause Key");
    page.transfer.LoadSettings();
    CHECK(page.cboPauseKey.Text() == L"Shift");
}

TEST_CASE("a missing or empty sound file loads as empty") {
    for (const bool stored : {false, true}) {
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = L"C:\\before.wav";
        page.Store(L"chkPlaySound", L"1");
        page.Store(L"chkBeep", L"0");
        if (stored) page.Store(L"SoundFile", L"");
        page.transfer.LoadSettings();
        CHECK(page.popupNotice.m_strSoundFile.empty());
        CHECK(page.cmdSoundFile.Enabled());
    }
}

TEST_CASE("a missing or empty sound file leaves the test button as it is while Play Sound is checked") {
    for (const bool stored : {false, true}) {
        for (const bool enabled : {false, true}) {
            CAPTURE(stored);
            CAPTURE(enabled);
            SettingsWindow page;
            page.cmdTestSound.Enabled(enabled);
            page.Store(L"chkPlaySound", L"1");
            page.Store(L"chkBeep", L"0");
            if (stored) page.Store(L"SoundFile", L"");
            page.transfer.LoadSettings();
            CHECK(page.chkPlaySound.Value() == 1);
            CHECK(page.cmdTestSound.Enabled() == enabled);
        }
    }
}

TEST_CASE("lists under other names, and the controls that store nothing, are left alone") {
    SettingsWindow page;
    page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
    page.lstExtra.AddItem(L"kept");
    page.lvwExtra.Add(1, L"kept");
    page.lblNavSite.Caption(L"http://www.calvane.example/");
    page.transfer.LoadSettings();
    CHECK(page.lstExtra.ListCount() == 1);
    CHECK(page.lvwExtra.Count() == 1);
    CHECK(page.lblNavSite.Caption() == L"http://www.calvane.example/");
}

TEST_CASE("loading is marked exactly while it lasts, also when it is left by an exception") {
    SettingsWindow page;
    bool loadingThen = false;
    page.logFile = [&]() -> std::wstring {
        loadingThen = page.changeMark.m_bLoading;
        RaiseError(ErrorNumber::ObjectNotSet);
    };
    page.transfer.LoadSettings();
    CHECK(loadingThen);
    CHECK_FALSE(page.changeMark.m_bLoading);

    struct Escape {};  // no error that could be passed over
    page.logFile = []() -> std::wstring { throw Escape(); };
    CHECK_THROWS_AS(page.transfer.LoadSettings(), Escape);
    CHECK_FALSE(page.changeMark.m_bLoading);

    page.logFile = []() -> std::wstring { throw std::bad_alloc(); };
    CHECK_NOTHROW(page.transfer.LoadSettings());
    CHECK_FALSE(page.changeMark.m_bLoading);
}

TEST_CASE("an engine that cannot tell its log does not keep the rest from loading") {
    SettingsWindow page;
    page.Store(L"Pause Key", L"F8");
    page.Store(L"Startup", L"Startup");
    page.logFile = []() -> std::wstring { throw AutomationError(RPC_E_DISCONNECTED); };
    page.lstClosedWnd.AddItem(L"old");
    page.transfer.LoadSettings();
    CHECK(page.lstClosedWnd.ListCount() == 0);
    CHECK(page.cboPauseKey.Text() == L"F8");
    CHECK(page.optStartup.Value());
}

TEST_CASE("a load fills the log") {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    const std::wstring path = std::wstring(folder) + L"settings_transfer.log";
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, "one\r\ntwo\r\n", 10, &written, nullptr);
    CloseHandle(file);
    SettingsWindow page;
    page.logFile = [&] { return path; };
    page.transfer.LoadSettings();
    REQUIRE(page.lstClosedWnd.ListCount() == 2);
    CHECK(page.lstClosedWnd.List(0) == L"two");
    DeleteFileW(path.c_str());
}

TEST_CASE("a load never enables the Apply button, and never disables it") {
    for (const bool marked : {false, true}) {
        SettingsWindow page;
        WriteFirstRunDefaults();
        page.chkBeep.Value(1);
        page.optStartup.Value(true);
        page.cmdApply.Enabled(marked);
        page.transfer.LoadSettings();
        CHECK(page.cmdApply.Enabled() == marked);
    }
}

TEST_CASE("a second load shows the stored values again and only them") {
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.user.Write(Schema::kExcludeKey, L"0", L"http://a.example");
    page.transfer.LoadSettings();
    const Rows banners = SettingsWindow::Rows(page.lvwBanners, 2);
    const Rows search = SettingsWindow::Rows(page.lvwSearchURLs, 1);
    page.lvwBanners.Checked(1, false);
    page.lvwBanners.Add(5, L"User Banner 0");
    page.lvwSearchURLs.Remove(1);
    page.lstExclude.AddItem(L"http://b.example");
    SettingsWindow::Click(page.chkBeep);
    page.popupNotice.m_strSoundFile = L"other.wav";
    page.transfer.LoadSettings();
    CHECK(SettingsWindow::Rows(page.lvwBanners, 2) == banners);
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == search);
    CHECK(page.ExcludeRows() == Rows{L"http://a.example"});
    CHECK(page.chkPlaySound.Value() == 1);
    CHECK(page.chkBeep.Value() == 0);
    CHECK(page.popupNotice.m_strSoundFile.ends_with(L"\\Arc.wav"));
}
