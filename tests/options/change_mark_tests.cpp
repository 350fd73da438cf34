// What enables the Apply button.
#include <doctest.h>

#include <functional>
#include <string>

#include "tests/support/settings_window.h"

namespace {

// What a user or the program does, and whether it enables the Apply button.
struct Deed {
    std::string name;
    bool marks;
    std::function<void(SettingsWindow& page)> Do;
};

const Deed kDeeds[] = {
    {"clicking Play Sound", true, [](SettingsWindow& page) { SettingsWindow::Click(page.chkPlaySound); }},
    {"clicking PC Speaker Beep", true, [](SettingsWindow& page) { SettingsWindow::Click(page.chkBeep); }},
    {"clicking Startup", true, [](SettingsWindow& page) { SettingsWindow::Click(page.optStartup); }},
    {"clicking RunOnly", true, [](SettingsWindow& page) { SettingsWindow::Click(page.optLoadWithKiller); }},
    {"clicking Manual", true, [](SettingsWindow& page) { SettingsWindow::Click(page.optLoadFromMenu); }},
    {"choosing a pause key", true, [](SettingsWindow& page) { page.cboPauseKey.Text(L"F6"); }},
    {"a change of the combo's text", true,
     [](SettingsWindow& page) { page.cboPauseKey.OnCommand(CBN_EDITCHANGE); }},
    {"checking Play Sound from code", true, [](SettingsWindow& page) { page.chkPlaySound.Value(1); }},
    {"selecting Startup from code", true, [](SettingsWindow& page) { page.optStartup.Value(true); }},
    {"MarkChanged itself", true, [](SettingsWindow& page) { page.changeMark.MarkChanged(); }},
    {"typing a speed", false,
     [](SettingsWindow& page) { SendMessageW(page.txtSpeed.Hwnd(), WM_CHAR, L'7', 0); }},
    {"typing a pause", false,
     [](SettingsWindow& page) { SendMessageW(page.txtPause.Hwnd(), WM_CHAR, L'7', 0); }},
    {"setting a speed from code", false, [](SettingsWindow& page) { page.txtSpeed.Text(L"3"); }},
    {"testing the sound", false, [](SettingsWindow& page) { page.popupNotice.cmdTestSound_Click(); }},
    {"refreshing the log", false,
     [](SettingsWindow& page) { ResumeNext([&] { page.closedLog.cmdRefreshLog_Click(); }); }},
    {"setting what is set already", false, [](SettingsWindow& page) { page.chkBeep.Value(0); }},
    {"clearing Startup from code", false,
     [](SettingsWindow& page) {
         SettingsWindow::Check(page.optStartup, true);
         page.optStartup.Value(false);
     }},
};

}  // namespace

TEST_CASE(
    "a change enables the Apply button, except while settings are being loaded; what changes no setting by a "
    "control of its own never does") {
    for (const bool isLoading : {true, false}) {
        for (const Deed& deed : kDeeds) {
            CAPTURE(deed.name);
            CAPTURE(isLoading);
            SettingsWindow page;
            page.changeMark.m_bLoading = isLoading;
            deed.Do(page);
            CHECK(page.cmdApply.Enabled() == (deed.marks && !isLoading));
        }
    }
    Button cmdApply(L"cmdApply", 1);
    CHECK_FALSE(ChangeMark(cmdApply).m_bLoading);
}
