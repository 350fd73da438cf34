// A walk through every page, and what of it is there after the manager was killed.
#include <doctest.h>

#include <algorithm>

#include "lists/resource.h"
#include "platform/text.h"
#include "store/settings_schema.h"
#include "tests/support/automation.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/support/wine.h"
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
constexpr wchar_t kAddSize[] = L"New Banner Height and Width";
constexpr wchar_t kAddSearch[] = L"Add Search Address";

// The values of a key below the settings' root as "name=text", sorted by name.
Rows StoredIn(const std::wstring& key) {
    HKEY opened = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, (L"Software\\Calvane\\" + key).c_str(), 0, KEY_READ, &opened);
    const RegistryKey owner(opened);
    Rows rows;
    for (DWORD index = 0;; ++index) {
        char name[64];
        char data[512];
        DWORD nameLength = sizeof(name);
        DWORD size = sizeof(data);
        DWORD type = 0;
        if (RegEnumValueA(opened, index, name, &nameLength, nullptr, &type, reinterpret_cast<BYTE*>(data),
                          &size) != ERROR_SUCCESS)
            break;
        CHECK(type == REG_SZ);
        rows.push_back(FromAnsi(name) + L'=' + FromAnsi(std::string(data, size)));
    }
    std::ranges::sort(rows);
    return rows;
}

// No start-up entry is left from another test, nor for one.
struct RunEntry {
    RunEntry() { Delete(); }
    ~RunEntry() { Delete(); }

    static void Delete() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue); }
    static std::wstring Text() {
        wchar_t text[1024] = L"";
        DWORD size = sizeof(text);
        RegGetValueW(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue, RRF_RT_REG_SZ, nullptr, text,
                     &size);
        return text;
    }
};

struct Walk : User {
    // Changes something of every kind on every page.
    void ChangeSettings();
    void ChangeLists();

    void CheckChangesStored() const;
    bool HasToldEngine() const { return engine.Count(L"ReloadSettings") > 0; }

    const RunEntry runEntry;
    const TestFolder folder;
    const std::wstring sound = folder.Write(L"bell.wav", "RIFF");
};

void Walk::ChangeSettings() {
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

void Walk::ChangeLists() {
    TurnTo(Page::Exclude);
    for (const wchar_t* const address :
         {L"http://one.example", L"http://two.example", L" Three.example ", L"http://four.example"})
        Answer(Open(L"cmdAddURL", kAddAddress), {{IDC_TXTURL, address}});
    Select(L"lstExclude", 1);
    Press(L"cmdRemoveURL");

    TurnTo(Page::Log);
    ::Put(engine.Control(), L"LogFile",
          folder.Write(L"closed.log",
                       "http://old.example/a\r\nhttp://new.example/page?x=1\r\nhttp://old.example/b\r\n"));
    Press(L"cmdRefreshLog");
    CHECK(Logged() == Rows{L"http://old.example/b", L"http://new.example/page?x=1", L"http://old.example/a"});
    for (const int row : {1, 2}) {
        Select(L"lstClosedWnd", row);
        Press(L"cmdAddTo");
    }

    TurnTo(Page::Banners);
    Tick(L"lvwBanners", 0);
    Tick(L"lvwBanners", 2);
    for (const auto& [height, width] : {std::pair{L"90", L"728"}, {L"1500", L"0"}, {L"2.5", L"-3"}})
        Answer(Open(L"cmdAddSize", kAddSize), {{IDC_TXTHEIGHT, height}, {IDC_TXTWIDTH, width}});
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

void Walk::CheckChangesStored() const {
    CHECK(StoredIn(L"Settings") == Rows{L"First Time=True", L"Pause Key=F7", L"SoundFile=" + sound,
                                        L"Startup=Startup", L"chkBeep=1", L"chkPlaySound=0", L"chkStartup=1",
                                        L"chkStopAds=True", L"chkStopPop=True", L"chkTray=1",
                                        L"txtPause=4000", L"txtSpeed=600"});
    CHECK(StoredIn(L"Exclude") == Rows{L"0=http://one.example", L"1= Three.example ",
                                       L"2=http://four.example", L"3=http://new.example",
                                       L"4=http://old.example"});
    // On Windows only an administrator's manager may write it.
    CHECK(RunEntry::Text().ends_with(L"\\CalvaneConfigLoader.exe") == RunsUnderWine());
}

}  // namespace

TEST_CASE_FIXTURE(
    Walk, "exactly what was applied is there after the manager was killed, on every page and in the store") {
    const Rows stored = StoredIn(L"Settings");
    CHECK_FALSE(CanPress(L"cmdApply"));
    ChangeSettings();
    ChangeLists();
    CHECK(CanPress(L"cmdApply"));
    CHECK(Look() == kChanged);
    CHECK(StoredIn(L"Settings") == stored);
    CHECK(StoredIn(L"Exclude").empty());
    CHECK_FALSE(HasToldEngine());

    Press(L"cmdApply");
    CHECK_FALSE(CanPress(L"cmdApply"));
    CHECK(IsWindowShown());
    CHECK(HasToldEngine());
    CheckChangesStored();

    TurnTo(Page::Settings);
    Press(L"optLoadFromMenu");
    TurnTo(Page::Exclude);
    Answer(Open(L"cmdAddURL", kAddAddress), {{IDC_TXTURL, L"http://late.example"}});
    TurnTo(Page::Search);
    Tick(L"lvwSearchURLs", 0);
    CHECK(CanPress(L"cmdApply"));
    CHECK(Look() != kChanged);
    CheckChangesStored();

    KillAndRestart();
    CHECK(Look() == kChanged);
    CHECK_FALSE(CanPress(L"cmdApply"));
    CheckChangesStored();
}

TEST_CASE("2,000 exclude rows come back in their order after an addition, a removal and a killed manager") {
    DeleteSettings();
    Rows rows;
    for (int n = 0; n < 2000; ++n) {
        rows.push_back(L"http://site" + std::to_wstring(n * 7919 % 2000) + L".example");
        WriteSetting(L"Exclude", std::to_wstring(n), rows.back());
    }
    User user(true);
    CHECK(user.Excluded() == rows);

    user.TurnTo(Page::Exclude);
    user.Answer(user.Open(L"cmdAddURL", kAddAddress), {{IDC_TXTURL, L"http://added.example"}});
    rows.push_back(L"http://added.example");
    user.Select(L"lstExclude", 3);
    user.Press(L"cmdRemoveURL");
    rows.erase(rows.begin() + 3);
    user.Press(L"cmdApply");

    user.KillAndRestart();
    CHECK(user.Excluded() == rows);
    CHECK(StoredIn(L"Exclude").size() == 2000);
}
