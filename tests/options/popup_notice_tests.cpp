// The notice of a closed window, and the buttons for it.
#include <windows.h>
#include <mmsystem.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/import_fake.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/sound_patch.h"

namespace {

// Hears what would be played instead of playing it. Every call fails, which nothing is to mind.
class SoundRecorder {
public:
    std::vector<std::string> Take() { return std::exchange(m_heard, {}); }

private:
    std::vector<std::string> m_heard;
    const SoundPatch m_play{[this](LPCSTR path, UINT flags) {
        m_heard.push_back("play " + std::string(path) + " " + std::to_string(flags));
        return FALSE;
    }};
    const ImportFake<"MessageBeep", decltype(&MessageBeep)> m_beep{
        "user32.dll", [this](UINT type) {
            m_heard.push_back("beep " + std::to_string(type));
            return FALSE;
        }};
};

using Sounds = std::vector<std::string>;

}  // namespace

TEST_CASE("the notice plays the file, then beeps, as the check boxes and the file say") {
    const Sounds play{"play C:\\Sounds\\a.wav 1"};
    const Sounds beep{"beep 0"};
    const Sounds both{play[0], beep[0]};
    struct Row {
        bool playSound;
        bool beep;
        const wchar_t* file;
        Sounds notice;     // PlayNotice
        Sounds announced;  // a closed pop-up
    };
    const Row rows[] = {
        {false, false, L"", {}, {}},
        {false, false, L"C:\\Sounds\\a.wav", {}, {}},
        {false, true, L"", beep, beep},
        {false, true, L"C:\\Sounds\\a.wav", beep, beep},
        {true, false, L"", {}, {}},
        {true, false, L"C:\\Sounds\\a.wav", play, play},
        // The handlers never let it come to both; a closed pop-up never does both.
        {true, true, L"", beep, {}},
        {true, true, L"C:\\Sounds\\a.wav", both, play},
    };
    SettingsWindow page;
    SoundRecorder sounds;
    for (const Row& row : rows) {
        CAPTURE(row.playSound);
        CAPTURE(row.beep);
        CAPTURE(std::wstring(row.file));
        SettingsWindow::Check(page.chkPlaySound, row.playSound);
        SettingsWindow::Check(page.chkBeep, row.beep);
        page.popupNotice.m_strSoundFile = row.file;
        page.popupNotice.PlayNotice();
        CHECK(sounds.Take() == row.notice);
        page.popupNotice.Announce();
        CHECK(sounds.Take() == row.announced);
        page.popupNotice.cmdTestSound_Click();
        CHECK(sounds.Take() == row.notice);
    }
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "two notices in quick succession are both played at once, so that the second cuts off the "
                  "first; the path is in the ANSI code page") {
    SoundRecorder sounds;
    popupNotice.m_strSoundFile = L"C:\\T\u00f6ne\\\u4e2d.wav";
    chkPlaySound.Value(1);
    popupNotice.Announce();
    popupNotice.Announce();
    const std::string play = "play " + ToAnsi(popupNotice.m_strSoundFile) + " 1";
    CHECK(sounds.Take() == Sounds{play, play});
}

TEST_CASE("where Windows has no winmm.dll, or one without the function, the notice plays nothing") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"a.wav";
    page.chkPlaySound.Value(1);
    SUBCASE("no library") {
        int refused = 0;
        const ImportFake<"LoadLibraryExW", decltype(&LoadLibraryExW)> load{
            "kernel32.dll", [&](LPCWSTR, HANDLE, DWORD) {
                ++refused;
                SetLastError(ERROR_MOD_NOT_FOUND);
                return nullptr;
            }};
        SoundRecorder sounds;
        page.popupNotice.PlayNotice();
        page.popupNotice.Announce();
        CHECK(refused == 2);
        CHECK(sounds.Take().empty());
    }
    SUBCASE("no function") {
        const SoundPatch none(nullptr);
        page.popupNotice.PlayNotice();
        page.popupNotice.Announce();
    }
    CHECK(page.chkPlaySound.Value() == 1);
}

TEST_CASE("a click on a check box clears the other one and sets the sound buttons; both may be unchecked") {
    // Play Sound, the beep, the file button and the test button, in this order: "1010".
    struct Row {
        std::string meaning;
        const wchar_t* file;
        std::string before;
        bool clicksBeep;
        std::string after;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        CAPTURE(row.meaning);
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = row.file;
        SettingsWindow::Check(page.chkPlaySound, row.before[0] == '1');
        SettingsWindow::Check(page.chkBeep, row.before[1] == '1');
        page.cmdSoundFile.Enabled(row.before[2] == '1');
        page.cmdTestSound.Enabled(row.before[3] == '1');
        SettingsWindow::Click(row.clicksBeep ? page.chkBeep : page.chkPlaySound);
        std::string after;
        for (const bool each : {page.chkPlaySound.Value() == 1, page.chkBeep.Value() == 1,
                                page.cmdSoundFile.Enabled(), page.cmdTestSound.Enabled()})
            after += each ? '1' : '0';
        CHECK(after == row.after);
        CHECK(page.cmdApply.Enabled());
    }
}
