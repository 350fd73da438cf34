// The notice of a closed window, and the buttons for it.
#include <windows.h>
#include <mmsystem.h>

#include <string>

#include "tests/support/import_fake.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/sound_patch.h"

TEST_CASE(
    "the notice plays the file, whose path is in the ANSI code page, then beeps, as the check boxes and the "
    "file say") {
    const std::wstring file = L"C:\\T\u00f6ne\\\u4e2d.wav";
    const std::string played = "play " + ToAnsi(file) + " 1; ";
    const std::string beeped = "beep 0; ";
    // Play Sound, the beep, the file; what PlayNotice and what a closed pop-up gives.
    const std::tuple<bool, bool, std::wstring, std::string, std::string> rows[] = {
        {false, false, L"", "", ""},
        {false, false, file, "", ""},
        {false, true, L"", beeped, beeped},
        {false, true, file, beeped, beeped},
        {true, false, L"", "", ""},
        {true, false, file, played, played},
        // The handlers never let it come to both; a closed pop-up never does both.
        {true, true, L"", beeped, ""},
        {true, true, file, played + beeped, played},
    };
    // Every call fails, which nothing is to mind.
    std::string heard;
    const auto note = [&](const std::string& sound) {
        heard += sound + "; ";
        return FALSE;
    };
    const SoundPatch play{[&](LPCSTR path, UINT flags) {
        return note("play " + std::string(path) + " " + std::to_string(flags));
    }};
    const ImportFake<"MessageBeep", decltype(&MessageBeep)> alert{
        "user32.dll", [&](UINT type) { return note("beep " + std::to_string(type)); }};
    SettingsWindow page;
    const auto heardOf = [&](void (PopupNotice::*give)()) {
        heard.clear();
        (page.popupNotice.*give)();
        return heard;
    };
    for (const auto& [playSound, beep, chosen, notice, announced] : rows) {
        CAPTURE(playSound);
        CAPTURE(beep);
        CAPTURE(chosen);
        SettingsWindow::Check(page.chkPlaySound, playSound);
        SettingsWindow::Check(page.chkBeep, beep);
        page.popupNotice.m_strSoundFile = chosen;
        CHECK(heardOf(&PopupNotice::PlayNotice) == notice);
        CHECK(heardOf(&PopupNotice::cmdTestSound_Click) == notice);
        CHECK(heardOf(&PopupNotice::Announce) == announced);
        // The second of two in quick succession cuts off the first.
        CHECK(heardOf(&PopupNotice::Announce) == announced);
    }
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE_FIXTURE(SettingsWindow, "where Windows cannot play a sound the notice plays nothing") {
    const SoundPatch none(nullptr);
    popupNotice.m_strSoundFile = L"a.wav";
    chkPlaySound.Value(1);
    popupNotice.PlayNotice();
    popupNotice.Announce();
    CHECK(chkPlaySound.Value() == 1);
}

TEST_CASE("a click on a check box clears the other one and sets the sound buttons; both may be unchecked") {
    // Play Sound, the beep, the file button and the test button, in this order: "1010".
    const std::tuple<std::string, std::wstring, std::string, bool, std::string> rows[] = {
        {"Play Sound enables the buttons where there is a file", L"a.wav", "0000", false, "1011"},
        {"and leaves the test button enabled", L"a.wav", "0001", false, "1011"},
        {"without a file the test button stays disabled", L"", "0000", false, "1010"},
        {"or as it is", L"", "0001", false, "1011"},
        {"Play Sound clears the beep", L"a.wav", "0100", false, "1011"},
        {"clearing Play Sound disables both buttons", L"a.wav", "1011", false, "0000"},
        {"so does the beep, which clears it", L"a.wav", "1011", true, "0100"},
        {"the beep alone cannot be tested", L"a.wav", "0000", true, "0100"},
        {"clearing the beep leaves the rest", L"a.wav", "0100", true, "0000"},
    };
    for (const auto& [meaning, file, before, clicksBeep, after] : rows) {
        CAPTURE(meaning);
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = file;
        SettingsWindow::Check(page.chkPlaySound, before[0] == '1');
        SettingsWindow::Check(page.chkBeep, before[1] == '1');
        page.cmdSoundFile.Enabled(before[2] == '1');
        page.cmdTestSound.Enabled(before[3] == '1');
        SettingsWindow::Click(clicksBeep ? page.chkBeep : page.chkPlaySound);
        std::string found;
        for (const bool each : {page.chkPlaySound.Value() == 1, page.chkBeep.Value() == 1,
                                page.cmdSoundFile.Enabled(), page.cmdTestSound.Enabled()})
            found += each ? '1' : '0';
        CHECK(found == after);
        CHECK(page.cmdApply.Enabled());
    }
}
