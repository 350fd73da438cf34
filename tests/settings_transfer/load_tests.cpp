// What a load makes of a store.
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "tests/settings_transfer/transfer_page.h"
#include "tests/support/test_folder.h"

namespace {

using StoredRows = std::vector<std::string>;

struct LoadPage : TransferPage {
    WindowState Loaded(const StoredRows& rows) {
        registry.contents = StoreOf(rows);
        transfer.LoadSettings();
        return StateOf(*this);
    }
};

}  // namespace

TEST_CASE_FIXTURE(
    LoadPage,
    "each stored option is shown in its control; a missing or empty one leaves its control as it is, "
    "or takes over the text read before it where that converts") {
    struct Row {
        std::string what;
        StoredRows stored;
        WindowState before;   // of a window as it is designed
        WindowState changes;  // of that one, with Manual and Shift chosen and no sound
    };
    const WindowState kBeepFromPlaySound = {"chkBeep=1", "chkExtra=1", "txtPause=0.001", "txtExtra=1"};
    const Row rows[] = {
        {"an empty store chooses Manual and Shift", {}, {}, {}},
        {"every option",
         {"chkPlaySound=1", "chkBeep=0", "txtPause=12000", "txtSpeed=400", "chkExtra=1",
          "txtExtra= as it stands ", "Pause Key=F9", "SoundFile=C:\\a.wav", "Startup=RunOnly"},
         {},
         {"chkPlaySound=1", "chkExtra=1", "txtPause=12", "txtSpeed=9", "txtExtra= as it stands ",
          "cboPauseKey=F9", "m_strSoundFile=C:\\a.wav", "optLoadFromMenu=0", "optLoadWithKiller=1",
          "m_strStartupMode=RunOnly", "cmdSoundFile=1", "cmdTestSound=1"}},
        {"with both notices checked the beep, visited last, wins",
         {"chkPlaySound=1", "chkBeep=1", "txtSpeed=1000", "txtPause=5000", "txtExtra=x"},
         {},
         {"chkBeep=1", "txtExtra=x"}},
        {"the beep takes over Play Sound; speed, pause and the extra box the beep",
         {"chkPlaySound=1"},
         {},
         kBeepFromPlaySound},
        {"an empty value counts as a missing one",
         {"chkPlaySound=1", "chkBeep=", "txtPause="},
         {},
         kBeepFromPlaySound},
        {"the pause takes over the speed",
         {"txtSpeed=200"},
         {},
         {"txtSpeed=10", "txtPause=0.2", "txtExtra=200"}},
        {"a check box behind the lists keeps its state where the last search text does not convert",
         {"Search\\1Name=One"},
         {"chkExtra=1"},
         {"lvwSearchURLs=One|One\n", "txtExtra=One"}},
        {"the pause key, the sound file and the mode take over nothing",
         {"txtExtra=F6"},
         {},
         {"txtExtra=F6"}},
        {"a stored pause key that is none leaves a window that has no choice without one",
         {"Pause Key=F12"},
         {},
         {"cboPauseKey="}},
        {"an engine that cannot tell its log does not keep the rest from loading",
         {"Pause Key=F8", "Startup=Startup"},
         {"lstClosedWnd=old\n"},
         {"lstClosedWnd=", "cboPauseKey=F8", "optLoadFromMenu=0", "optStartup=1",
          "m_strStartupMode=Startup"}},
        {"a missing sound file loads as empty and leaves the test button as it is under Play Sound",
         {"chkPlaySound=1", "chkBeep=0"},
         {"m_strSoundFile=C:\\before.wav", "chkPlaySound=1", "cmdTestSound=1"},
         {"m_strSoundFile=", "cmdSoundFile=1", "cmdTestSound=1", "txtPause=0", "txtExtra=0"}},
        {"so does an empty one",
         {"chkPlaySound=1", "chkBeep=0", "SoundFile="},
         {"m_strSoundFile=C:\\before.wav", "chkPlaySound=1", "cmdTestSound=0"},
         {"m_strSoundFile=", "cmdSoundFile=1", "txtPause=0", "txtExtra=0"}},
        {"without exclude rows the list is empty", {}, {"lstExclude=edited\n"}, {"lstExclude="}},
        {"exclude rows are read from 0 to the first gap",
         {"Exclude\\0=http://zero", "Exclude\\1=http://one", "Exclude\\3=http://three"},
         {"lstExclude=edited\n"},
         {"lstExclude=http://zero\nhttp://one\n", "txtExtra=http://one"}},
        {"an empty exclude row repeats the row before it",
         {"Exclude\\0=http://a", "Exclude\\1=", "Exclude\\2=http://c"},
         {},
         {"lstExclude=http://a\nhttp://a\nhttp://c\n", "txtExtra=http://c"}},
        {"search addresses are read from 1 on, whichever way their value is spelled",
         {"Search\\1Name=One", "Search\\1Url=http://one", "Search\\1Use=True", "Search\\2Name=Two",
          "Search\\2URL=http://two", "Search\\2Use=False", "Search\\3Name=Three", "Search\\3URL=http://three",
          "Search\\4Name=Four"},
         {"lvwSearchURLs=edited\n"},
         {"lvwSearchURLs=One|http://one|x\nTwo|http://two\nThree|http://three\n", "txtExtra=http://three"}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        Put(*this, designed);
        Put(*this, row.before);
        WindowState shown = StateOf(*this);
        const WindowState always{"cboPauseKey=Shift", "optLoadFromMenu=1", "m_strStartupMode=Manual",
                                 "cmdSoundFile=0", "cmdTestSound=0"};
        for (const WindowState& each : {always, row.changes}) {
            for (const auto& [name, text] : each)
                shown[name] = text;
        }
        CHECK(Difference(Loaded(row.stored), shown) == "");
        CHECK(registry.contents == StoreOf(row.stored));
    }
}

TEST_CASE_FIXTURE(LoadPage,
                  "a text is shown as the number, level, check mark or key that it is; one that is none "
                  "leaves what is shown") {
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"txtPause=1500", "txtPause", "1.5"},      {"txtPause=-5000", "txtPause", "-5"},
        {"txtPause=5000.5", "txtPause", "5.0005"}, {"txtPause=five", "txtPause", "5.0005"},
        {"txtPause=1e400", "txtPause", "5.0005"},  {"txtPause= ", "txtPause", "5.0005"},
        {"txtSpeed= 200.5 ", "txtSpeed", "10"},    {"txtSpeed=2147483648", "txtSpeed", "10"},
        {"txtSpeed=fast", "txtSpeed", "10"},       {"chkExtra=1", "chkExtra", "1"},
        {"chkExtra=2", "chkExtra", "1"},           {"chkExtra=32768", "chkExtra", "1"},
        {"chkExtra=True", "chkExtra", "1"},        {"chkExtra=0.5", "chkExtra", "0"},
        {"chkExtra= 1.4 ", "chkExtra", "1"},       {"Pause Key=shift", "cboPauseKey", "Shift"},
        {"Pause Key=F10", "cboPauseKey", "F10"},   {"Pause Key=F12", "cboPauseKey", "F10"},
        {"Pause Key=F", "cboPauseKey", "F10"},     {"Pause Key=", "cboPauseKey", "F10"}};
    for (const auto& [stored, control, shown] : rows) {
        CAPTURE(stored);
        CHECK(Loaded({stored}).at(control) == shown);
    }
}

TEST_CASE_FIXTURE(LoadPage, "nothing is taken over from the load before") {
    Loaded({"chkPlaySound=1"});
    chkBeep.Value(0);
    CHECK(Loaded({}).at("chkBeep") == "0");
}

TEST_CASE_FIXTURE(LoadPage, "banner sizes are read from 1 on, with name, width, height and use") {
    StoredRows stored{"Banners\\1Name=Full",  "Banners\\1Width=468", "Banners\\1Height=60",
                      "Banners\\1Use=True",   "Banners\\2Name=Half", "Banners\\2Width=-2.5",
                      "Banners\\2Height=1e3", "Banners\\2Use=False"};
    // What is stored, and shown, behind those two.
    const std::tuple<std::string, StoredRows, std::string> rows[] = {
        {"to the first missing name", {"Banners\\4Name=beyond the gap", "Banners\\4Use=True"}, ""},
        {"to the first entry without a use, which is shown; its check mark comes from the width",
         {"Banners\\3Name=Third", "Banners\\3Height=7", "Banners\\3Width=0"},
         "Third|0|7\n"},
        {"the width may be a mark", {"Banners\\3Width=100"}, "Third|100|7|x\n"},
        {"missing fields take over what was read before them: the height the name, the width the height",
         {"Banners\\3Height=", "Banners\\3Width=", "Banners\\3Use=True", "Banners\\4Name=Fourth",
          "Banners\\4Height=9", "Banners\\5Name=Fifth", "Banners\\5Width=8"},
         "Third|Third|Third|x\nFourth|9|9|x\nFifth|8|Fifth|x\n"},
    };
    lvwBanners.Add(L"edited");
    for (const auto& [what, more, shown] : rows) {
        CAPTURE(what);
        stored.insert(stored.end(), more.begin(), more.end());
        CHECK(Loaded(stored).at("lvwBanners") == "Full|468|60|x\nHalf|-2.5|1e3\n" + shown);
    }
    for (const std::string use : {"True", "true", "1", "-1", "False", "FALSE", "0", "yes", "?"}) {
        CAPTURE(use);
        const bool isUsed = use == "1" || use == "-1" || use[1] == 'r';
        CHECK(Loaded({"Search\\1Name=One", "Search\\1Url=http://one", "Search\\1Use=" + use})
                  .at("lvwSearchURLs") == (isUsed ? "One|http://one|x\n" : "One|http://one\n"));
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "loading is marked exactly while it lasts, also when it is left by an exception") {
    bool loadingThen = false;
    logFile = [&]() -> std::wstring {
        loadingThen = changeMark.m_bLoading;
        throw AutomationError(RPC_E_DISCONNECTED);
    };
    transfer.LoadSettings();
    CHECK(loadingThen);
    CHECK_FALSE(changeMark.m_bLoading);
    struct Escape {};  // no error that could be passed over
    logFile = []() -> std::wstring { throw Escape(); };
    CHECK_THROWS_AS(transfer.LoadSettings(), Escape);
    CHECK_FALSE(changeMark.m_bLoading);
}

TEST_CASE_FIXTURE(
    TransferPage,
    "a load sets the columns of the lists, and draws each list once, after its rows, also a log "
    "that cannot be read") {
    using Deeds = std::vector<std::string>;
    struct Watch {
        static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR deeds) {
            auto& noted = *reinterpret_cast<Deeds*>(deeds);
            if (message == WM_SETREDRAW) noted.push_back(wParam != FALSE ? "draw" : "hold");
            if (message == LB_RESETCONTENT || message == LVM_DELETEALLITEMS) noted.push_back("clear");
            if (message == LB_INSERTSTRING || message == LVM_INSERTITEMW) noted.push_back("add");
            return DefSubclassProc(hwnd, message, wParam, lParam);
        }
    };
    const TestFolder folder;
    const std::wstring path = folder.Write(L"closed.log", "A\r\nB\r\nC\r\n");
    registry.contents = UsualStore();
    const auto deedsOn = [&](const Control& list) {
        Deeds deeds;
        SetWindowSubclass(list.Hwnd(), Watch::Procedure, 1, reinterpret_cast<DWORD_PTR>(&deeds));
        transfer.LoadSettings();
        RemoveWindowSubclass(list.Hwnd(), Watch::Procedure, 1);
        return deeds;
    };
    CHECK(deedsOn(lstClosedWnd) == Deeds{"hold", "clear", "draw"});
    logFile = [&] { return path; };
    for (const Control* const list : {&lstClosedWnd, &lstExclude})
        CHECK(deedsOn(*list) == Deeds{"hold", "clear", "add", "add", "add", "draw"});
    for (const Control* const list : {&lvwBanners, &lvwSearchURLs})
        CHECK(deedsOn(*list) == Deeds{"clear", "hold", "add", "add", "add", "draw"});
    const int width = lvwBanners.Width();
    CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 0) == width / 2);
    CHECK(std::abs(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), 1) - width * 68 / 100) <= 1);
}
