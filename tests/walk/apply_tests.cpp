// A walk through every page, and what of it is there after the manager was killed.
#include <doctest.h>

#include "lists/resource.h"
#include "store/settings_schema.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/walk/user.h"

namespace {

const Rows kChanged{L"optStartup",
                    L"chkBeep",
                    L"cmdSoundFile is disabled",
                    L"cmdTestSound is disabled",
                    L"F7",
                    L"txtSpeed: 8",
                    L"txtPause: 4",
                    L"http://one.example",
                    L" Three.example ",
                    L"http://four.example",
                    L"http://new.example",
                    L"http://old.example",
                    L"Full Banner|468|60",
                    L"Half Banner|234|60",
                    L"Quarter Banner|120|60|x",
                    L"Button|88|31",
                    L"User Banner 1|0|1500|x",
                    L"User Banner 2|-3|2.5",
                    L"Alta Vista|http://www.altavista.com/sites/search/web?q=|x",
                    L"Edited|http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=",
                    L"Google|http://www.google.com/search?q=|x",
                    L"Teoma|http://s.teoma.com/search?q=|x",
                    L"Overture|http://www.overture.com/d/search/?type=home&tm=1&Keywords=|x",
                    L"Mine|http://mine.example/?q=|x"};

constexpr wchar_t kAddAddress[] = L"Add Web Site URL";
constexpr wchar_t kAddSearch[] = L"Add Search Address";

struct Walk : User {
    // No start-up entry stays behind.
    ~Walk() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue); }

    // Changes something of every kind on every page.
    void ChangeSettings() {
        TurnTo(Page::Settings);
        Press(L"optStartup");
        // In the dialog for opening files, whose controls Windows numbers.
        constexpr int kFileName = 0x480;
        constexpr int kFileNameCombo = 0x47C;
        const HWND files = Open(L"cmdSoundFile", L"Select a Sound File");
        const HWND combo = GetDlgItem(files, kFileNameCombo);
        SendMessageW(combo != nullptr ? combo : GetDlgItem(files, kFileName), WM_SETTEXT, 0,
                     reinterpret_cast<LPARAM>(sound.c_str()));
        Close(files, IDOK);
        Press(L"chkBeep");
        Key(L"cboPauseKey", VK_DOWN);
        Key(L"cboPauseKey", VK_DOWN);
        Spin(L"udbSpeed", true);
        Spin(L"udbSpeed", true);
        Spin(L"udbPause", false);
    }

    void ChangeLists() {
        TurnTo(Page::Exclude);
        for (const wchar_t* const address :
             {L"http://one.example", L"http://two.example", L" Three.example ", L"http://four.example"})
            Answer(Open(L"cmdAddURL", kAddAddress), {{IDC_TXTURL, address}});
        Select(L"lstExclude", 1);
        Press(L"cmdRemoveURL");

        TurnTo(Page::Log);
        engine.Set(L"LogFile", folder.Write(L"closed.log",
                                            "http://old.example/a\r\nhttp://new.example/page?x=1\r\n"
                                            "http://old.example/b\r\n"));
        Press(L"cmdRefreshLog");
        CHECK(ListBoxRows(Find(L"lstClosedWnd")) ==
              Rows{L"http://old.example/b", L"http://new.example/page?x=1", L"http://old.example/a"});
        for (const int row : {1, 2}) {
            Select(L"lstClosedWnd", row);
            Press(L"cmdAddTo");
        }

        TurnTo(Page::Banners);
        Tick(L"lvwBanners", 0);
        Tick(L"lvwBanners", 2);
        for (const auto& [height, width] : {std::pair{L"90", L"728"}, {L"1500", L"0"}, {L"2.5", L"-3"}})
            Answer(Open(L"cmdAddSize", L"New Banner Height and Width"),
                   {{IDC_TXTHEIGHT, height}, {IDC_TXTWIDTH, width}});
        Tick(L"lvwBanners", 6);
        Select(L"lvwBanners", 4);
        Press(L"cmdRemoveSize");

        TurnTo(Page::Search);
        Select(L"lvwSearchURLs", 0);
        Press(L"cmdRemoveSearch");
        Tick(L"lvwSearchURLs", 1);
        Answer(Open(L"cmdAddSearch", kAddSearch),
               {{IDC_TXTNAME, L"Mine"}, {IDC_TXTURL, L"http://mine.example/?q="}});
        Select(L"lvwSearchURLs", 1);
        const HWND edit = Open(L"cmdEditSearch", kAddSearch);
        CHECK(ShownText(GetDlgItem(edit, IDC_TXTNAME)) == L"MSN");
        Answer(edit, {{IDC_TXTNAME, L"Edited"}});
    }

    bool HasToldEngine() const { return engine.Count(L"ReloadSettings") > 0; }
    static std::wstring StoredSound() { return Setting(L"Settings", L"SoundFile"); }

    const TestFolder folder;
    const std::wstring sound = folder.Write(L"bell.wav", "RIFF");
};

}  // namespace

TEST_CASE_FIXTURE(Walk, "exactly what was applied is there after the manager was killed, on every page") {
    CHECK_FALSE(CanPress(L"cmdApply"));
    ChangeSettings();
    ChangeLists();
    CHECK(CanPress(L"cmdApply"));
    CHECK(Look() == kChanged);
    CHECK(StoredSound() != sound);
    CHECK_FALSE(HasToldEngine());

    Press(L"cmdApply");
    CHECK_FALSE(CanPress(L"cmdApply"));
    CHECK(IsWindowShown());
    CHECK(HasToldEngine());
    CHECK(StoredSound() == sound);

    TurnTo(Page::Settings);
    Press(L"optLoadFromMenu");
    TurnTo(Page::Exclude);
    Answer(Open(L"cmdAddURL", kAddAddress), {{IDC_TXTURL, L"http://late.example"}});
    TurnTo(Page::Search);
    Tick(L"lvwSearchURLs", 0);
    CHECK(CanPress(L"cmdApply"));
    CHECK(Look() != kChanged);

    KillAndRestart();
    CHECK(Look() == kChanged);
    CHECK(StoredSound() == sound);
    CHECK_FALSE(CanPress(L"cmdApply"));
}
