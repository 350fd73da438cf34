// What enables the Apply button.
#include <doctest.h>

#include <functional>
#include <string>

#include "tests/support/settings_window.h"

TEST_CASE(
    "a change enables the Apply button, except while settings are being loaded; what changes no setting by a "
    "control of its own never does") {
    using Page = SettingsWindow;
    // What a user or the program does, and whether it enables the Apply button.
    struct Deed {
        std::string name;
        bool marks;
        std::function<void(Page& page)> Do;
    };
    const Deed deeds[] = {
        {"clicking Play Sound", true, [](Page& page) { Page::Click(page.chkPlaySound); }},
        {"clicking PC Speaker Beep", true, [](Page& page) { Page::Click(page.chkBeep); }},
        {"clicking Startup", true, [](Page& page) { Page::Click(page.optStartup); }},
        {"clicking RunOnly", true, [](Page& page) { Page::Click(page.optLoadWithKiller); }},
        {"clicking Manual", true, [](Page& page) { Page::Click(page.optLoadFromMenu); }},
        {"choosing a pause key", true, [](Page& page) { page.cboPauseKey.Text(L"F6"); }},
        {"a change of its text", true, [](Page& page) { page.cboPauseKey.OnCommand(CBN_EDITCHANGE); }},
        {"checking Play Sound from code", true, [](Page& page) { page.chkPlaySound.Value(1); }},
        {"selecting Startup from code", true, [](Page& page) { page.optStartup.Value(true); }},
        {"MarkChanged itself", true, [](Page& page) { page.changeMark.MarkChanged(); }},
        {"typing a speed", false, [](Page& page) { SendMessageW(page.txtSpeed.Hwnd(), WM_CHAR, L'7', 0); }},
        {"typing a pause", false, [](Page& page) { SendMessageW(page.txtPause.Hwnd(), WM_CHAR, L'7', 0); }},
        {"setting a speed from code", false, [](Page& page) { page.txtSpeed.Text(L"3"); }},
        {"testing the sound", false, [](Page& page) { page.popupNotice.cmdTestSound_Click(); }},
        {"setting what is set already", false, [](Page& page) { page.chkBeep.Value(0); }},
        {"clearing Startup from code", false,
         [](Page& page) {
             Page::Check(page.optStartup, true);
             page.optStartup.Value(false);
         }},
    };
    for (const bool isLoading : {true, false}) {
        for (const Deed& deed : deeds) {
            CAPTURE(deed.name);
            CAPTURE(isLoading);
            Page page;
            page.changeMark.m_bLoading = isLoading;
            deed.Do(page);
            CHECK(page.cmdApply.Enabled() == (deed.marks && !isLoading));
        }
    }
    Button cmdApply(L"cmdApply", 1);
    CHECK_FALSE(ChangeMark(cmdApply).m_bLoading);
}
