// A walk through every page, and what of it is there after the manager was killed.
#include <doctest.h>

#include "lists/resource.h"
#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/support/wine.h"
#include "tests/walk/store_snapshot.h"
#include "tests/walk/user.h"

namespace {

constexpr wchar_t kDuplicate[] = L"The URL you entered already exists in the list, please enter another";
constexpr wchar_t kDuplicateEntry[] = L"This is a duplicate entry and cannot be added.";

// An engine of the test's own, and its log. It ends with the test, or before with a manager that is killed.
struct Engine {
    Engine() { Call(control.Get(), L"Reset"); }
    ~Engine() {
        ResumeNext([this] { Call(control.Get(), L"Quit"); });
        CHECK(ProgramEnds(L"SentrelStandin.exe"));
    }

    void Log(std::string_view lines) { Put(control.Get(), L"LogFile", folder.Write(L"closed.log", lines)); }
    std::wstring Calls() { return ToText(Get(control.Get(), L"Calls")); }

    ComPtr<IDispatch> control = CreateByName(L"SentrelStandin.Control");
    TestFolder folder;
};

// No start-up entry is left from another test, nor for one.
struct NoRunEntry {
    NoRunEntry() { DeleteRunEntry(); }
    ~NoRunEntry() { DeleteRunEntry(); }
};

const Rows kDefaultSearches = {L"Yahoo|http://search.yahoo.com/bin/search?p=|x",
                               L"Alta Vista|http://www.altavista.com/sites/search/web?q=|x",
                               L"MSN|http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=|x",
                               L"Google|http://www.google.com/search?q=|x",
                               L"Teoma|http://s.teoma.com/search?q=|x",
                               L"Overture|http://www.overture.com/d/search/?type=home&tm=1&Keywords=|x"};
const Rows kDefaultBanners = {L"Full Banner|468|60|x", L"Half Banner|234|60", L"Quarter Banner|120|60",
                              L"Button|88|31"};

// In the dialog for opening files, whose controls Windows numbers.
void ChooseFile(User& user, const std::wstring& path) {
    const HWND dialog = user.Open(L"cmdSoundFile", L"Select a Sound File");
    constexpr int kFileName = 0x480;
    constexpr int kFileNameCombo = 0x47C;
    const HWND combo = GetDlgItem(dialog, kFileNameCombo);
    SendMessageW(combo != nullptr ? combo : GetDlgItem(dialog, kFileName), WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(path.c_str()));
    user.Close(dialog, IDOK);
}

void CheckDefaults(const Shown& shown) {
    CHECK(shown.startup == L"Show in tray only when IE is running");
    CHECK(shown.playSound);
    CHECK_FALSE(shown.beep);
    CHECK(shown.canChooseSound);
    CHECK(shown.canTestSound);
    CHECK(shown.pauseKey == L"Shift");
    CHECK(shown.speed == L"6");
    CHECK(shown.pause == L"5");
    CHECK(shown.exclude.empty());
    CHECK(shown.banners == kDefaultBanners);
    CHECK(shown.search == kDefaultSearches);
}

// Changes something of every kind on every page, and meets each refusal on the way.
void ChangeEverything(User& user, Engine& engine, const std::wstring& sound) {
    user.TurnTo(Page::Settings);
    user.Press(L"optStartup");
    ChooseFile(user, sound);
    user.Press(L"chkBeep");
    user.Key(L"cboPauseKey", VK_DOWN);
    user.Key(L"cboPauseKey", VK_DOWN);
    user.Spin(L"udbSpeed", true);
    user.Spin(L"udbSpeed", true);
    user.Spin(L"udbPause", false);

    user.TurnTo(Page::Exclude);
    user.AddExcluded(L"http://one.example");
    user.AddExcluded(L"http://two.example");
    user.AddExcluded(L" Three.example ");
    const HWND refused = user.Open(L"cmdAddURL", L"Add Web Site URL");
    user.Type(refused, IDC_TXTURL, L"HTTP://ONE.example");
    CHECK(user.PressAndRead(refused, IDOK) == kDuplicate);
    user.Type(refused, IDC_TXTURL, L"http://four.example");
    user.Close(refused, IDOK);
    user.Select(L"lstExclude", 1);
    user.Press(L"cmdRemoveURL");

    user.TurnTo(Page::Log);
    engine.Log("http://old.example/a\r\nhttp://new.example/page?x=1\r\nhttp://old.example/b\r\n");
    user.Press(L"cmdRefreshLog");
    CHECK(user.Logged() ==
          Rows{L"http://old.example/b", L"http://new.example/page?x=1", L"http://old.example/a"});
    user.Select(L"lstClosedWnd", 1);
    user.Press(L"cmdAddTo");
    user.Select(L"lstClosedWnd", 2);
    user.Press(L"cmdAddTo");
    user.Select(L"lstClosedWnd", 0);
    CHECK(user.PressAndRead(L"cmdAddTo") == kDuplicateEntry);

    user.TurnTo(Page::Banners);
    user.Tick(L"lvwBanners", 0);
    user.Tick(L"lvwBanners", 2);
    user.AddBanner(L"90", L"728");
    user.AddBanner(L"1500", L"0");
    user.AddBanner(L"2.5", L"-3");
    user.Tick(L"lvwBanners", 6);
    user.Select(L"lvwBanners", 4);
    user.Press(L"cmdRemoveSize");

    user.TurnTo(Page::Search);
    user.Select(L"lvwSearchURLs", 0);
    user.Press(L"cmdRemoveSearch");
    user.Tick(L"lvwSearchURLs", 1);
    user.AddSearch(L"Mine", L"http://mine.example/?q=");
    user.Select(L"lvwSearchURLs", 1);
    const HWND edit = user.Open(L"cmdEditSearch", L"Add Search Address");
    CHECK(ShownText(GetDlgItem(edit, IDC_TXTNAME)) == L"MSN");
    user.Type(edit, IDC_TXTNAME, L"Edited");
    user.Close(edit, IDOK);
}

void CheckEverythingChanged(const Shown& shown) {
    CHECK(shown.startup == L"Startup (always available)");
    CHECK_FALSE(shown.playSound);
    CHECK(shown.beep);
    CHECK_FALSE(shown.canChooseSound);
    CHECK_FALSE(shown.canTestSound);
    CHECK(shown.pauseKey == L"F7");
    CHECK(shown.speed == L"8");
    CHECK(shown.pause == L"4");
    CHECK(shown.exclude == Rows{L"http://one.example", L" Three.example ", L"http://four.example",
                                L"http://new.example", L"http://old.example"});
    CHECK(shown.banners == Rows{L"Full Banner|468|60", L"Half Banner|234|60", L"Quarter Banner|120|60|x",
                                L"Button|88|31", L"User Banner 1|0|1500|x", L"User Banner 2|-3|2.5"});
    CHECK(shown.search == Rows{kDefaultSearches[1],
                               L"Edited|http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=",
                               kDefaultSearches[3], kDefaultSearches[4], kDefaultSearches[5],
                               L"Mine|http://mine.example/?q=|x"});
}

void CheckEverythingStored(const std::wstring& sound) {
    CHECK(StoredIn(L"Settings") == Rows{L"First Time=True", L"Pause Key=F7", L"SoundFile=" + sound,
                                        L"Startup=Startup", L"chkBeep=1", L"chkPlaySound=0", L"chkStartup=1",
                                        L"chkStopAds=True", L"chkStopPop=True", L"chkTray=1",
                                        L"txtPause=4000", L"txtSpeed=600"});
    CHECK(StoredIn(L"Exclude") == Rows{L"0=http://one.example", L"1= Three.example ",
                                       L"2=http://four.example", L"3=http://new.example",
                                       L"4=http://old.example"});
    CHECK(StoredIn(L"Banners") ==
          Rows{L"1Height=60",   L"1Name=Full Banner",    L"1Use=False", L"1Width=468",
               L"2Height=60",   L"2Name=Half Banner",    L"2Use=False", L"2Width=234",
               L"3Height=60",   L"3Name=Quarter Banner", L"3Use=True",  L"3Width=120",
               L"4Height=31",   L"4Name=Button",         L"4Use=False", L"4Width=88",
               L"5Height=1500", L"5Name=User Banner 1",  L"5Use=True",  L"5Width=0",
               L"6Height=2.5",  L"6Name=User Banner 2",  L"6Use=False", L"6Width=-3"});
    CHECK(StoredIn(L"Search") ==
          Rows{L"1Name=Alta Vista", L"1URL=http://www.altavista.com/sites/search/web?q=", L"1Use=True",
               L"2Name=Edited", L"2URL=http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=",
               L"2Use=False", L"3Name=Google", L"3URL=http://www.google.com/search?q=", L"3Use=True",
               L"4Name=Teoma", L"4URL=http://s.teoma.com/search?q=", L"4Use=True", L"5Name=Overture",
               L"5URL=http://www.overture.com/d/search/?type=home&tm=1&Keywords=", L"5Use=True",
               L"6Name=Mine", L"6URL=http://mine.example/?q=", L"6Use=True"});
    // On Windows only an administrator's manager may write it.
    CHECK(RunEntry().ends_with(L"\\CalvaneConfigLoader.exe") == RunsUnderWine());
}

// On every page something else than ChangeEverything left there.
void ChangeSomethingMore(User& user) {
    user.TurnTo(Page::Settings);
    user.Press(L"optLoadFromMenu");
    user.Press(L"chkPlaySound");
    user.Key(L"cboPauseKey", VK_HOME);
    user.Spin(L"udbSpeed", false);
    user.Spin(L"udbPause", true);
    user.TurnTo(Page::Exclude);
    user.AddExcluded(L"http://late.example");
    user.Select(L"lstExclude", 0);
    user.Press(L"cmdRemoveURL");
    user.TurnTo(Page::Log);
    user.Press(L"cmdRefreshLog");
    user.TurnTo(Page::Banners);
    user.Tick(L"lvwBanners", 1);
    user.AddBanner(L"1", L"1");
    user.Select(L"lvwBanners", 4);
    user.Press(L"cmdRemoveSize");
    user.TurnTo(Page::Search);
    user.Tick(L"lvwSearchURLs", 0);
    user.AddSearch(L"Late", L"http://late.example");
    user.Select(L"lvwSearchURLs", 1);
    user.Press(L"cmdRemoveSearch");
}

}  // namespace

TEST_CASE("exactly what was applied is there after the manager was killed, on every page and in the store") {
    const NoRunEntry noRunEntry;
    Engine engine;
    const std::wstring sound = engine.folder.Write(L"bell.wav", "RIFF");
    User user;
    CheckDefaults(user.Look());
    CHECK_FALSE(user.CanPress(L"cmdApply"));

    ChangeEverything(user, engine, sound);
    CHECK(user.CanPress(L"cmdApply"));
    CheckEverythingChanged(user.Look());
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    CHECK(engine.Calls().find(L"ReloadSettings") == std::wstring::npos);

    user.Press(L"cmdApply");
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    CHECK(user.IsWindowShown());
    CHECK(engine.Calls().find(L"ReloadSettings") != std::wstring::npos);
    CheckEverythingStored(sound);

    const Shown applied = user.Look();
    ChangeSomethingMore(user);
    const Shown changed = user.Look();
    CHECK(changed.startup != applied.startup);
    CHECK(changed.playSound != applied.playSound);
    CHECK(changed.pauseKey != applied.pauseKey);
    CHECK(changed.speed != applied.speed);
    CHECK(changed.pause != applied.pause);
    CHECK(changed.exclude != applied.exclude);
    CHECK(changed.banners != applied.banners);
    CHECK(changed.search != applied.search);
    CHECK(changed.canApply);
    CheckEverythingStored(sound);

    user.KillAndRestart();
    CheckEverythingChanged(user.Look());
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    CheckEverythingStored(sound);
}

TEST_CASE("Cancel restores every page and hides the window, and nothing is stored") {
    const NoRunEntry noRunEntry;
    Engine engine;
    User user;
    const Rows stored = Stored();
    ChangeEverything(user, engine, engine.folder.Write(L"bell.wav", "RIFF"));
    user.Press(L"cmdCancel");
    CHECK_FALSE(user.IsWindowShown());
    CheckDefaults(user.Look());
    CHECK(user.CanPress(L"cmdApply"));  // by design
    CHECK(Stored() == stored);
    CHECK(RunEntry().empty());

    user.KillAndRestart();
    CheckDefaults(user.Look());
    CHECK(Stored() == stored);
}

TEST_CASE("OK stores every page and hides the window, and does not call the engine") {
    const NoRunEntry noRunEntry;
    Engine engine;
    const std::wstring sound = engine.folder.Write(L"bell.wav", "RIFF");
    User user;
    ChangeEverything(user, engine, sound);
    user.Press(L"cmdOK");
    CHECK_FALSE(user.IsWindowShown());
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    CheckEverythingStored(sound);
    CHECK(engine.Calls().find(L"ReloadSettings") == std::wstring::npos);

    user.EndAndRestart();
    CheckEverythingChanged(user.Look());
    CheckEverythingStored(sound);

    // Another mode than the start with Windows takes the start-up entry away again.
    user.TurnTo(Page::Settings);
    user.Press(L"optLoadFromMenu");
    user.Press(L"cmdOK");
    CHECK(Setting(L"Settings", L"Startup") == L"Manual");
    CHECK(RunEntry().empty());
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
    user.AddExcluded(L"http://added.example");
    rows.push_back(L"http://added.example");
    user.Select(L"lstExclude", 3);
    user.Press(L"cmdRemoveURL");
    rows.erase(rows.begin() + 3);
    user.Press(L"cmdApply");

    user.KillAndRestart();
    CHECK(user.Excluded() == rows);
    CHECK(StoredIn(L"Exclude").size() == 2000);
}
