// What a load makes of a store.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "tests/settings_transfer/transfer_page.h"
#include "tests/support/shown_text.h"

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
        const char* meaning;
        StoredRows stored;
        WindowState before;   // of a window as it is designed
        WindowState changes;  // of that one, with Manual and Shift chosen and no sound
    };
    const WindowState kBeepFromPlaySound = {
        {"chkBeep", L"1"}, {"chkExtra", L"1"}, {"txtPause", L"0.001"}, {"txtExtra", L"1"}};
    const Row rows[] = {
        {"an empty store chooses Manual and Shift", {}, {}, {}},
        {"every option",
         {"Settings\\chkPlaySound=1", "Settings\\chkBeep=0", "Settings\\txtPause=12000",
          "Settings\\txtSpeed=400", "Settings\\chkExtra=1", "Settings\\txtExtra= as it stands ",
          "Settings\\Pause Key=F9", "Settings\\SoundFile=C:\\a.wav", "Settings\\Startup=RunOnly"},
         {},
         {{"chkPlaySound", L"1"},
          {"chkExtra", L"1"},
          {"txtPause", L"12"},
          {"txtSpeed", L"9"},
          {"txtExtra", L" as it stands "},
          {"cboPauseKey", L"F9"},
          {"m_strSoundFile", L"C:\\a.wav"},
          {"optLoadFromMenu", L"0"},
          {"optLoadWithKiller", L"1"},
          {"m_strStartupMode", L"RunOnly"},
          {"cmdSoundFile", L"1"},
          {"cmdTestSound", L"1"}}},
        {"with both notices checked the beep, visited last, wins",
         {"Settings\\chkPlaySound=1", "Settings\\chkBeep=1", "Settings\\txtSpeed=1000",
          "Settings\\txtPause=5000", "Settings\\txtExtra=x"},
         {},
         {{"chkBeep", L"1"}, {"txtExtra", L"x"}}},
        {"the beep takes over Play Sound; speed, pause and the extra box the beep",
         {"Settings\\chkPlaySound=1"},
         {},
         kBeepFromPlaySound},
        {"an empty value counts as a missing one",
         {"Settings\\chkPlaySound=1", "Settings\\chkBeep=", "Settings\\txtPause="},
         {},
         kBeepFromPlaySound},
        {"the pause takes over the speed",
         {"Settings\\txtSpeed=200"},
         {},
         {{"txtSpeed", L"10"}, {"txtPause", L"0.2"}, {"txtExtra", L"200"}}},
        {"a check box behind the lists keeps its state where the last search text does not convert",
         {"Search\\1Name=One"},
         {{"chkExtra", L"1"}},
         {{"lvwSearchURLs", L"One|One\n"}, {"txtExtra", L"One"}}},
        {"the pause key, the sound file and the mode take over nothing",
         {"Settings\\txtExtra=F6"},
         {},
         {{"txtExtra", L"F6"}}},
        {"a stored pause key that is none leaves a window that has no choice without one",
         {"Settings\\Pause Key=F12"},
         {},
         {{"cboPauseKey", L""}}},
        {"an engine that cannot tell its log does not keep the rest from loading",
         {"Settings\\Pause Key=F8", "Settings\\Startup=Startup"},
         {{"lstClosedWnd", L"old\n"}},
         {{"lstClosedWnd", L""},
          {"cboPauseKey", L"F8"},
          {"optLoadFromMenu", L"0"},
          {"optStartup", L"1"},
          {"m_strStartupMode", L"Startup"}}},
        {"without exclude rows the list is empty", {}, {{"lstExclude", L"edited\n"}}, {{"lstExclude", L""}}},
        {"exclude rows are read from 0 to the first gap",
         {"Exclude\\0=http://zero", "Exclude\\1=http://one", "Exclude\\3=http://three"},
         {{"lstExclude", L"edited\n"}},
         {{"lstExclude", L"http://zero\nhttp://one\n"}, {"txtExtra", L"http://one"}}},
        {"an empty exclude row repeats the row before it",
         {"Exclude\\0=http://a", "Exclude\\1=", "Exclude\\2=http://c"},
         {},
         {{"lstExclude", L"http://a\nhttp://a\nhttp://c\n"}, {"txtExtra", L"http://c"}}},
        {"search addresses are read from 1 on, whichever way their value is spelled",
         {"Search\\1Name=One", "Search\\1Url=http://one", "Search\\1Use=True", "Search\\2Name=Two",
          "Search\\2URL=http://two", "Search\\2Use=False", "Search\\3Name=Three", "Search\\3URL=http://three",
          "Search\\4Name=Four"},
         {{"lvwSearchURLs", L"edited\n"}},
         {{"lvwSearchURLs", L"One|http://one|x\nTwo|http://two\nThree|http://three\n"},
          {"txtExtra", L"http://three"}}},
    };
    for (const Row& row : rows) {
        CAPTURE(std::string(row.meaning));
        Put(*this, designed);
        Put(*this, row.before);
        WindowState shown = StateOf(*this);
        const WindowState always{{"cboPauseKey", L"Shift"},
                                 {"optLoadFromMenu", L"1"},
                                 {"m_strStartupMode", L"Manual"},
                                 {"cmdSoundFile", L"0"},
                                 {"cmdTestSound", L"0"}};
        for (const WindowState& changes : {always, row.changes}) {
            for (const auto& [name, text] : changes)
                shown[name] = text;
        }
        CHECK(Difference(Loaded(row.stored), shown) == "");
        CHECK(registry.contents == StoreOf(row.stored));
    }
}

TEST_CASE_FIXTURE(LoadPage,
                  "a pause is shown in seconds, fractions too; a pause key that is no item changes nothing") {
    struct Row {
        const char* stored;
        const char* control;
        const wchar_t* shown;
    };
    const Row rows[] = {
        {"txtPause=1500", "txtPause", L"1.5"},      {"txtPause=2500", "txtPause", L"2.5"},
        {"txtPause=30000", "txtPause", L"30"},      {"txtPause=1", "txtPause", L"0.001"},
        {"txtPause=0", "txtPause", L"0"},           {"txtPause=-5000", "txtPause", L"-5"},
        {"txtPause=5000.5", "txtPause", L"5.0005"}, {"Pause Key=Alt", "cboPauseKey", L"Alt"},
        {"Pause Key=Ctrl", "cboPauseKey", L"Ctrl"}, {"Pause Key=Shift", "cboPauseKey", L"Shift"},
        {"Pause Key=F6", "cboPauseKey", L"F6"},     {"Pause Key=F7", "cboPauseKey", L"F7"},
        {"Pause Key=F8", "cboPauseKey", L"F8"},     {"Pause Key=F9", "cboPauseKey", L"F9"},
        {"Pause Key=F10", "cboPauseKey", L"F10"},   {"Pause Key=F12", "cboPauseKey", L"F10"},
        {"Pause Key=F", "cboPauseKey", L"F10"},     {"Pause Key=F100", "cboPauseKey", L"F10"},
        {"Pause Key= ", "cboPauseKey", L"F10"},     {"Pause Key=", "cboPauseKey", L"F10"},
        {"Pause Key=Alt+F4", "cboPauseKey", L"F10"}};
    for (const Row& row : rows) {
        CAPTURE(std::string(row.stored));
        CHECK(Loaded({std::string("Settings\\") + row.stored}).at(row.control) == row.shown);
    }
}

TEST_CASE_FIXTURE(LoadPage, "nothing is taken over from the load before") {
    Loaded({"Settings\\chkPlaySound=1"});
    chkBeep.Value(0);
    CHECK(Loaded({}).at("chkBeep") == L"0");
}

TEST_CASE_FIXTURE(
    LoadPage,
    "a missing or empty sound file loads as empty and leaves the test button as it is under Play Sound") {
    for (const StoredRows& file : {StoredRows{}, {"Settings\\SoundFile="}}) {
        for (const wchar_t* const canTest : {L"0", L"1"}) {
            CAPTURE(file.size());
            StoredRows stored{"Settings\\chkPlaySound=1", "Settings\\chkBeep=0"};
            stored.insert(stored.end(), file.begin(), file.end());
            Put(*this,
                {{"m_strSoundFile", L"C:\\before.wav"}, {"chkPlaySound", L"1"}, {"cmdTestSound", canTest}});
            WindowState shown = Loaded(stored);
            CHECK(shown["m_strSoundFile"].empty());
            CHECK(shown["cmdSoundFile"] == L"1");
            CHECK(shown["cmdTestSound"] == canTest);
        }
    }
}

TEST_CASE_FIXTURE(LoadPage, "banner sizes are read from 1 on, with name, width, height and use") {
    StoredRows stored{"Banners\\1Name=Full",  "Banners\\1Width=468", "Banners\\1Height=60",
                      "Banners\\1Use=True",   "Banners\\2Name=Half", "Banners\\2Width=-2.5",
                      "Banners\\2Height=1e3", "Banners\\2Use=False"};
    const std::wstring two = L"Full|468|60|x\nHalf|-2.5|1e3\n";
    const auto loadedWith = [&](const StoredRows& more) {
        stored.insert(stored.end(), more.begin(), more.end());
        return Loaded(stored).at("lvwBanners");
    };
    lvwBanners.Add(1, L"edited");
    SUBCASE("to the first missing name") {
        CHECK(loadedWith({"Banners\\4Name=beyond the gap", "Banners\\4Use=True"}) == two);
    }
    SUBCASE("to the first entry without a use, which is shown; its check mark comes from the width") {
        CHECK(loadedWith({"Banners\\3Name=Third", "Banners\\3Height=7", "Banners\\3Width=0",
                          "Banners\\4Name=Fourth", "Banners\\4Use=True"}) == two + L"Third|0|7\n");
        CHECK(loadedWith({"Banners\\3Width=100"}) == two + L"Third|100|7|x\n");
    }
    SUBCASE(
        "missing fields take over what was read before them, the height from the name, the width from that") {
        CHECK(loadedWith({"Banners\\3Name=Third", "Banners\\3Use=True", "Banners\\4Name=Fourth",
                          "Banners\\4Height=9", "Banners\\4Use=True", "Banners\\5Name=Fifth",
                          "Banners\\5Width=8"}) ==
              two + L"Third|Third|Third|x\nFourth|9|9|x\nFifth|8|Fifth|x\n");
    }
    SUBCASE("with the uses that Automation takes for a Boolean") {
        for (const char* const use : {"True", "true", "1", "-1"})
            CHECK(loadedWith({"Banners\\1Use=" + std::string(use)}) == two);
        for (const char* const use : {"False", "FALSE", "0", "yes", "?"})
            CHECK(loadedWith({"Banners\\1Use=" + std::string(use)}) == L"Full|468|60\nHalf|-2.5|1e3\n");
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

TEST_CASE_FIXTURE(TransferPage, "a load sets the columns of the lists, and draws each once, after its rows") {
    static std::vector<UINT> s_messages;
    struct Watch {
        static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR) {
            if (message == WM_SETREDRAW || message == LB_INSERTSTRING || message == LVM_INSERTITEMW)
                s_messages.push_back(message == WM_SETREDRAW ? static_cast<UINT>(wParam) : message);
            return DefSubclassProc(hwnd, message, wParam, lParam);
        }
    };
    registry.contents = UsualStore();
    for (const HWND list : {lstExclude.Hwnd(), lvwBanners.Hwnd(), lvwSearchURLs.Hwnd()}) {
        s_messages.clear();
        SetWindowSubclass(list, Watch::Procedure, 1, 0);
        transfer.LoadSettings();
        RemoveWindowSubclass(list, Watch::Procedure, 1);
        REQUIRE(s_messages.size() == 5);
        CHECK(s_messages.front() == FALSE);
        CHECK(s_messages.back() == TRUE);
        CHECK(std::count_if(s_messages.begin(), s_messages.end(), [](UINT each) { return each <= 1; }) == 2);
    }
    const int width = lvwBanners.Width();
    CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 0) == width / 2);
    CHECK(std::abs(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), 1) - width * 68 / 100) <= 1);
}
