// What a load makes of a store.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/window_state.h"

using namespace Schema;

TEST_CASE(
    "each stored option is shown in its control; a missing or empty one leaves its control as it is, or "
    "takes over "
    "the text read before it where that converts") {
    struct Row {
        const char* meaning;
        std::vector<std::pair<const wchar_t*, const wchar_t*>> stored;
        void (*change)(WindowState& shown);  // of a window as it is designed, with Manual and Shift chosen
    };
    const Row rows[] = {
        {"an empty store chooses Manual and Shift", {}, [](WindowState&) {}},
        {"every option",
         {{L"chkPlaySound", L"1"},
          {L"chkBeep", L"0"},
          {L"txtPause", L"12000"},
          {L"txtSpeed", L"400"},
          {L"chkExtra", L"1"},
          {L"txtExtra", L" as it stands "},
          {L"Pause Key", L"F9"},
          {L"SoundFile", L"C:\\a.wav"},
          {L"Startup", L"RunOnly"}},
         [](WindowState& shown) {
             shown.playSound = shown.extra = 1;
             shown.pause = L"12";
             shown.speed = L"9";
             shown.extraText = L" as it stands ";
             shown.pauseKey = L"F9";
             shown.soundFile = L"C:\\a.wav";
             shown.selectedMode = shown.mode = L"RunOnly";
             shown.canChooseSound = shown.canTestSound = true;
         }},
        {"with both notices checked the beep, visited last, wins",
         {{L"chkPlaySound", L"1"},
          {L"chkBeep", L"1"},
          {L"txtSpeed", L"1000"},
          {L"txtPause", L"5000"},
          {L"txtExtra", L"x"}},
         [](WindowState& shown) {
             shown.beep = 1;
             shown.extraText = L"x";
         }},
        {"the beep takes over Play Sound; speed, pause and the extra box the beep",
         {{L"chkPlaySound", L"1"}},
         [](WindowState& shown) {
             shown.beep = shown.extra = 1;
             shown.pause = L"0.001";
             shown.extraText = L"1";
         }},
        {"an empty value counts as a missing one",
         {{L"chkPlaySound", L"1"}, {L"chkBeep", L""}, {L"txtPause", L""}},
         [](WindowState& shown) {
             shown.beep = shown.extra = 1;
             shown.pause = L"0.001";
             shown.extraText = L"1";
         }},
        {"the pause takes over the speed",
         {{L"txtSpeed", L"200"}},
         [](WindowState& shown) {
             shown.speed = L"10";
             shown.pause = L"0.2";
             shown.extraText = L"200";
         }},
        {"a stored pause key that is none leaves a window that has no choice without one",
         {{L"Pause Key", L"F12"}},
         [](WindowState& shown) { shown.pauseKey.clear(); }},
        {"the pause key, the sound file and the mode take over nothing",
         {{L"txtExtra", L"F6"}},
         [](WindowState& shown) { shown.extraText = L"F6"; }},
    };
    for (const Row& row : rows) {
        CAPTURE(row.meaning);
        SettingsWindow page;
        for (const auto& [name, text] : row.stored)
            page.Store(name, text);
        WindowState shown;
        shown.pauseKey = L"Shift";
        shown.selectedMode = shown.mode = L"Manual";
        row.change(shown);
        page.transfer.LoadSettings();
        CHECK(Difference(StateOf(page), shown) == "");
        CHECK(page.user.Exists(L"Software\\Calvane") == !row.stored.empty());
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "a stored pause is shown in seconds, fractions too; one of 2500 shows 2.5") {
    const SettingsWindow::Values rows = {{L"1500", L"1.5"},     {L"2500", L"2.5"}, {L"30000", L"30"},
                                         {L"1", L"0.001"},      {L"0", L"0"},      {L"-5000", L"-5"},
                                         {L"5000.5", L"5.0005"}};
    for (const auto& [stored, shown] : rows) {
        Store(L"txtPause", stored);
        transfer.LoadSettings();
        CHECK(txtPause.Text() == shown);
    }
}

TEST_CASE_FIXTURE(
    SettingsWindow,
    "a text that is taken over reaches across the lists, within them, and not into the next load") {
    SUBCASE("a check box behind the lists keeps its state where the last search text does not convert") {
        Write(kSearchKey, {{L"1Name", L"One"}});
        chkExtra.Value(1);
        transfer.LoadSettings();
        CHECK(chkExtra.Value() == 1);
        CHECK(txtExtra.Text() == L"One");
    }
    SUBCASE("an empty exclude row repeats the row before it") {
        Write(kExcludeKey, {{L"0", L"http://a.example"}, {L"1", L""}, {L"2", L"http://c.example"}});
        transfer.LoadSettings();
        CHECK(ListBoxRows(lstExclude.Hwnd()) ==
              Rows{L"http://a.example", L"http://a.example", L"http://c.example"});
    }
    SUBCASE("nothing is taken over from the load before") {
        Store(L"chkPlaySound", L"1");
        transfer.LoadSettings();
        user.DeleteTree(kSettingsKey);
        chkBeep.Value(0);
        transfer.LoadSettings();
        CHECK(chkBeep.Value() == 0);
    }
}

TEST_CASE_FIXTURE(
    SettingsWindow,
    "the pause key: a stored item is chosen, a missing one gives Shift, any other text, F12 or an "
    "empty one, changes nothing") {
    for (const wchar_t* const key : {L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"}) {
        Store(L"Pause Key", key);
        transfer.LoadSettings();
        CHECK(cboPauseKey.Text() == key);
    }
    for (const wchar_t* const key : {L"F12", L"F", L"F100", L" ", L"", L"Alt+F4"}) {
        CAPTURE(std::wstring(key));
        Store(L"Pause Key", key);
        transfer.LoadSettings();
        CHECK(cboPauseKey.Text() == L"F10");
    }
    user.Delete(kSettingsKey, L"Pause Key");
    transfer.LoadSettings();
    CHECK(cboPauseKey.Text() == L"Shift");
}

TEST_CASE(
    "a missing or empty sound file loads as empty and leaves the test button as it is under Play Sound") {
    for (const bool stored : {false, true}) {
        for (const bool enabled : {false, true}) {
            CAPTURE(stored);
            CAPTURE(enabled);
            SettingsWindow page;
            page.popupNotice.m_strSoundFile = L"C:\\before.wav";
            page.cmdTestSound.Enabled(enabled);
            page.Write(kSettingsKey, {{L"chkPlaySound", L"1"}, {L"chkBeep", L"0"}});
            if (stored) page.Store(L"SoundFile", L"");
            SettingsWindow::Check(page.chkPlaySound, true);
            page.transfer.LoadSettings();
            CHECK(page.popupNotice.m_strSoundFile.empty());
            CHECK(page.cmdSoundFile.Enabled());
            CHECK(page.cmdTestSound.Enabled() == enabled);
        }
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "loading is marked exactly while it lasts, also when it is left by an exception") {
    bool loadingThen = false;
    logFile = [&]() -> std::wstring {
        loadingThen = changeMark.m_bLoading;
        RaiseError(ErrorNumber::ObjectNotSet);
    };
    transfer.LoadSettings();
    CHECK(loadingThen);
    CHECK_FALSE(changeMark.m_bLoading);
    struct Escape {};  // no error that could be passed over
    logFile = []() -> std::wstring { throw Escape(); };
    CHECK_THROWS_AS(transfer.LoadSettings(), Escape);
    CHECK_FALSE(changeMark.m_bLoading);
}

TEST_CASE_FIXTURE(SettingsWindow, "an engine that cannot tell its log does not keep the rest from loading") {
    Write(kSettingsKey, {{L"Pause Key", L"F8"}, {L"Startup", L"Startup"}});
    logFile = []() -> std::wstring { throw AutomationError(RPC_E_DISCONNECTED); };
    lstClosedWnd.AddItem(L"old");
    transfer.LoadSettings();
    CHECK(lstClosedWnd.ListCount() == 0);
    CHECK(cboPauseKey.Text() == L"F8");
    CHECK(optStartup.Value());
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "exclude rows are read from 0 to the first gap; an empty key gives an empty list") {
    lstExclude.AddItem(L"edited");
    transfer.LoadSettings();
    CHECK(ListBoxRows(lstExclude.Hwnd()).empty());
    Write(kExcludeKey, {{L"0", L"http://zero"}, {L"1", L"http://one"}, {L"3", L"http://three"}});
    transfer.LoadSettings();
    CHECK(ListBoxRows(lstExclude.Hwnd()) == Rows{L"http://zero", L"http://one"});
}

TEST_CASE_FIXTURE(SettingsWindow, "banner sizes are read from 1 on, with name, width, height and use") {
    lvwBanners.Add(1, L"edited");
    Write(kBannersKey, {{L"1Name", L"Full"},
                        {L"1Width", L"468"},
                        {L"1Height", L"60"},
                        {L"1Use", L"True"},
                        {L"2Name", L"Half"},
                        {L"2Width", L"-2.5"},
                        {L"2Height", L"1e3"},
                        {L"2Use", L"False"}});
    Rows expected{L"Full|468|60|x", L"Half|-2.5|1e3"};
    SUBCASE("to the first missing name") {
        Write(kBannersKey, {{L"4Name", L"beyond the gap"}, {L"4Use", L"True"}});
        transfer.LoadSettings();
        CHECK(ListViewRows(lvwBanners.Hwnd()) == expected);
    }
    SUBCASE("to the first entry without a use, which is shown; its check mark comes from the width") {
        Write(kBannersKey,
              {{L"3Name", L"Third"}, {L"3Height", L"7"}, {L"4Name", L"Fourth"}, {L"4Use", L"True"}});
        for (const auto& [width, row] :
             SettingsWindow::Values{{L"0", L"Third|0|7"}, {L"100", L"Third|100|7|x"}}) {
            Write(kBannersKey, {{L"3Width", width}});
            transfer.LoadSettings();
            CHECK(ListViewRows(lvwBanners.Hwnd()) == Rows{expected[0], expected[1], row});
        }
    }
    SUBCASE(
        "missing fields take over what was read before them, the height from the name, the width from that") {
        Write(kBannersKey, {{L"3Name", L"Third"},
                            {L"3Use", L"True"},
                            {L"4Name", L"Fourth"},
                            {L"4Height", L"9"},
                            {L"4Use", L"True"},
                            {L"5Name", L"Fifth"},
                            {L"5Width", L"8"}});
        transfer.LoadSettings();
        expected.insert(expected.end(), {L"Third|Third|Third|x", L"Fourth|9|9|x", L"Fifth|8|Fifth|x"});
        CHECK(ListViewRows(lvwBanners.Hwnd()) == expected);
    }
    SUBCASE("with the uses that Automation takes for a Boolean") {
        const std::pair<const wchar_t*, bool> uses[] = {{L"True", true},   {L"False", false}, {L"true", true},
                                                        {L"FALSE", false}, {L"1", true},      {L"0", false},
                                                        {L"-1", true},     {L"yes", false},   {L"?", false}};
        for (const auto& [use, checked] : uses) {
            CAPTURE(std::wstring(use));
            Write(kBannersKey, {{L"1Use", use}});
            transfer.LoadSettings();
            CHECK(lvwBanners.Checked(1) == checked);
            CHECK(lvwBanners.Count() == 2);
        }
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "search addresses are read from 1 on, whichever way their value is spelled") {
    lvwSearchURLs.Add(1, L"edited");
    Write(kSearchKey, {{L"1Name", L"One"},
                       {L"1Url", L"http://one"},
                       {L"1Use", L"True"},
                       {L"2Name", L"Two"},
                       {L"2URL", L"http://two"},
                       {L"2Use", L"False"},
                       {L"3Name", L"Three"},
                       {L"3URL", L"http://three"},
                       {L"4Name", L"Four"}});
    transfer.LoadSettings();
    CHECK(ListViewRows(lvwSearchURLs.Hwnd()) ==
          Rows{L"One|http://one|x", L"Two|http://two", L"Three|http://three"});
}

TEST_CASE_FIXTURE(SettingsWindow, "a load sets the columns of the lists") {
    transfer.LoadSettings();
    const int width = lvwBanners.Width();
    CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 0) == width / 2);
    CHECK(std::abs(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), 1) - width * 68 / 100) <= 1);
}

TEST_CASE_FIXTURE(SettingsWindow, "a load draws each list once, after its rows") {
    static std::vector<UINT> s_messages;
    struct Watch {
        static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR) {
            if (message == WM_SETREDRAW || message == LB_INSERTSTRING || message == LVM_INSERTITEMW)
                s_messages.push_back(message == WM_SETREDRAW ? static_cast<UINT>(wParam) : message);
            return DefSubclassProc(hwnd, message, wParam, lParam);
        }
    };
    WriteFirstRunDefaults();
    Write(kExcludeKey, {{L"0", L"http://a"}, {L"1", L"http://b"}});
    for (const HWND list : {lstExclude.Hwnd(), lvwBanners.Hwnd(), lvwSearchURLs.Hwnd()}) {
        s_messages.clear();
        SetWindowSubclass(list, Watch::Procedure, 1, 0);
        transfer.LoadSettings();
        RemoveWindowSubclass(list, Watch::Procedure, 1);
        REQUIRE(s_messages.size() >= 4);
        CHECK(s_messages.front() == FALSE);
        CHECK(s_messages.back() == TRUE);
        CHECK(std::count_if(s_messages.begin(), s_messages.end(), [](UINT each) { return each <= 1; }) == 2);
    }
}
