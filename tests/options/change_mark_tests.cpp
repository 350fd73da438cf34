// What enables the Apply button.
#include <doctest.h>

#include <string>

#include "tests/support/settings_window.h"

namespace {

// What a user or the program does, and whether it enables the Apply button.
struct Deed {
    const char* name;
    void (*Do)(SettingsWindow& page);
};

constexpr Deed kMarkingDeeds[] = {
    {"clicking Play Sound", [](SettingsWindow& page) { SettingsWindow::Click(page.chkPlaySound); }},
    {"clicking PC Speaker Beep", [](SettingsWindow& page) { SettingsWindow::Click(page.chkBeep); }},
    {"clicking Startup", [](SettingsWindow& page) { SettingsWindow::Click(page.optStartup); }},
    {"clicking RunOnly", [](SettingsWindow& page) { SettingsWindow::Click(page.optLoadWithKiller); }},
    {"clicking Manual", [](SettingsWindow& page) { SettingsWindow::Click(page.optLoadFromMenu); }},
    {"choosing a pause key", [](SettingsWindow& page) { page.cboPauseKey.Text(L"F6"); }},
    {"a change of the combo's text",
     [](SettingsWindow& page) { page.cboPauseKey.OnCommand(CBN_EDITCHANGE); }},
    {"checking Play Sound from code", [](SettingsWindow& page) { page.chkPlaySound.Value(1); }},
    {"selecting Startup from code", [](SettingsWindow& page) { page.optStartup.Value(true); }},
    {"MarkChanged itself", [](SettingsWindow& page) { page.changeMark.MarkChanged(); }},
};

constexpr Deed kSilentDeeds[] = {
    {"typing a speed", [](SettingsWindow& page) { SendMessageW(page.txtSpeed.Hwnd(), WM_CHAR, L'7', 0); }},
    {"typing a pause", [](SettingsWindow& page) { SendMessageW(page.txtPause.Hwnd(), WM_CHAR, L'7', 0); }},
    {"setting a speed from code", [](SettingsWindow& page) { page.txtSpeed.Text(L"3"); }},
    {"testing the sound", [](SettingsWindow& page) { page.popupNotice.cmdTestSound_Click(); }},
    {"refreshing the log",
     [](SettingsWindow& page) { ResumeNext([&] { page.closedLog.cmdRefreshLog_Click(); }); }},
    {"setting what is set already", [](SettingsWindow& page) { page.chkBeep.Value(0); }},
    {"clearing Startup from code",
     [](SettingsWindow& page) {
         SettingsWindow::Check(page.optStartup, true);
         page.optStartup.Value(false);
     }},
};

}  // namespace

TEST_CASE("a change enables the Apply button, except while settings are being loaded") {
    for (const bool isLoading : {true, false}) {
        for (const Deed& deed : kMarkingDeeds) {
            CAPTURE(std::string(deed.name));
            SettingsWindow page;
            page.changeMark.m_bLoading = isLoading;
            deed.Do(page);
            CHECK(page.cmdApply.Enabled() != isLoading);
        }
    }
    Button cmdApply(L"cmdApply", 1);
    CHECK_FALSE(ChangeMark(cmdApply).m_bLoading);
}

TEST_CASE("what changes no setting by a control of its own leaves the Apply button disabled") {
    for (const Deed& deed : kSilentDeeds) {
        CAPTURE(std::string(deed.name));
        SettingsWindow page;
        deed.Do(page);
        CHECK_FALSE(page.cmdApply.Enabled());
    }
}
