#include <windows.h>
#include <mmsystem.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/handle.h"
#include "platform/system_library.h"
#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/sound_patch.h"
#include "tests/support/test_folder.h"

namespace {

std::vector<std::string>* g_sounds = nullptr;

BOOL WINAPI FakePlaySound(LPCSTR path, UINT flags) {
    g_sounds->push_back("play " + std::string(path) + " " + std::to_string(flags));
    return FALSE;
}

BOOL WINAPI FakeBeep(UINT type) {
    g_sounds->push_back("beep " + std::to_string(type));
    return FALSE;
}

// Hears what would be played instead of playing it. Every call fails, which nothing is to mind.
class SoundRecorder {
public:
    SoundRecorder() { g_sounds = &heard; }
    ~SoundRecorder() { g_sounds = nullptr; }

    std::vector<std::string> Take() { return std::exchange(heard, {}); }

    std::vector<std::string> heard;

private:
    SoundPatch m_play{&FakePlaySound};
    ImportPatch m_beep{"user32.dll", "MessageBeep", &FakeBeep};
};

using Sounds = std::vector<std::string>;

void StopSounds() {
    auto* const play = FunctionOf<decltype(sndPlaySoundA)>(GetModuleHandleW(L"winmm.dll"), "sndPlaySoundA");
    REQUIRE((play != nullptr));
    play(nullptr, 0);
}

// A Windows without winmm.dll.
class NoSoundLibrary {
public:
    NoSoundLibrary() { s_refused = 0; }

    int Refused() const { return s_refused; }

private:
    static HMODULE WINAPI Refuse(LPCWSTR, HANDLE, DWORD) {
        ++s_refused;
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }

    static inline int s_refused = 0;
    const ImportPatch m_load{"kernel32.dll", "LoadLibraryExW", &Refuse};
};

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

TEST_CASE("the path of the sound is given in the ANSI code page") {
    SettingsWindow page;
    SoundRecorder sounds;
    page.popupNotice.m_strSoundFile = L"C:\\T\u00f6ne\\\u4e2d.wav";
    page.chkPlaySound.Value(1);
    page.popupNotice.PlayNotice();
    CHECK(sounds.Take() == Sounds{"play " + ToAnsi(L"C:\\T\u00f6ne\\\u4e2d.wav") + " 1"});
}

TEST_CASE("a second notice is played at once, so that it cuts off the first") {
    SettingsWindow page;
    SoundRecorder sounds;
    page.popupNotice.m_strSoundFile = L"a.wav";
    page.chkPlaySound.Value(1);
    page.popupNotice.Announce();
    page.popupNotice.Announce();
    CHECK(sounds.Take() == Sounds{"play a.wav 1", "play a.wav 1"});
}

TEST_CASE("a sound that is missing, unreadable or none does not keep the notice waiting") {
    const TestFolder folder;
    SettingsWindow page;
    FileHandle lock;
    SUBCASE("a file that does not exist") {
        page.popupNotice.m_strSoundFile = L"C:\\no such folder\\none.wav";
    }
    SUBCASE("a folder") {
        page.popupNotice.m_strSoundFile = folder.Folder();
    }
    SUBCASE("a file that somebody else has for himself") {
        page.popupNotice.m_strSoundFile = folder.Write(L"locked.wav", "RIFF");
        lock.Reset(CreateFileW(page.popupNotice.m_strSoundFile.c_str(), GENERIC_READ, 0, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        REQUIRE(lock);
    }
    SUBCASE("an empty file") {
        page.popupNotice.m_strSoundFile = folder.Write(L"empty.wav", "");
    }
    SUBCASE("a text") {
        page.popupNotice.m_strSoundFile = folder.Write(L"text.wav", std::string(100000, 'x'));
    }
    SUBCASE("a wave file that is cut off") {
        page.popupNotice.m_strSoundFile =
            folder.Write(L"cut.wav", std::string("RIFF\xFF\xFF\xFF\x7FWAVEfmt \x10\0\0\0", 20));
    }
    page.chkPlaySound.Value(1);
    page.popupNotice.PlayNotice();
    StopSounds();
}

TEST_CASE("where Windows has no winmm.dll, or one without the function, the notice plays nothing") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"a.wav";
    page.chkPlaySound.Value(1);
    SUBCASE("no library") {
        const NoSoundLibrary system;
        const SoundRecorder sounds;
        page.popupNotice.PlayNotice();
        page.popupNotice.Announce();
        CHECK(system.Refused() == 2);
        CHECK(sounds.heard.empty());
    }
    SUBCASE("no function") {
        const SoundPatch none(nullptr);
        page.popupNotice.PlayNotice();
        page.popupNotice.Announce();
    }
    CHECK(page.chkPlaySound.Value() == 1);
}

TEST_CASE("the test button is pressed like any other button and plays the notice") {
    SettingsWindow page;
    SoundRecorder sounds;
    page.popupNotice.m_strSoundFile = L"a.wav";
    SettingsWindow::Click(page.chkPlaySound);
    SettingsWindow::Click(page.cmdTestSound);
    CHECK(sounds.Take() == Sounds{"play a.wav 1"});
}

TEST_CASE("checking one kind of notice clears the other; both may be unchecked") {
    SettingsWindow page;
    SettingsWindow::Click(page.chkPlaySound);
    CHECK(page.chkPlaySound.Value() == 1);
    CHECK(page.chkBeep.Value() == 0);
    SettingsWindow::Click(page.chkBeep);
    CHECK(page.chkPlaySound.Value() == 0);
    CHECK(page.chkBeep.Value() == 1);
    SettingsWindow::Click(page.chkPlaySound);
    CHECK(page.chkPlaySound.Value() == 1);
    CHECK(page.chkBeep.Value() == 0);
    SettingsWindow::Click(page.chkPlaySound);
    CHECK(page.chkPlaySound.Value() == 0);
    CHECK(page.chkBeep.Value() == 0);
}

TEST_CASE("checking Play Sound enables the file button, and the test button when there is a file") {
    struct Row {
        const wchar_t* file;
        bool testEnabledBefore;
        bool testEnabledAfter;
    };
    const Row rows[] = {
        {L"a.wav", false, true}, {L"a.wav", true, true}, {L"", false, false}, {L"", true, true}};
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.file));
        CAPTURE(row.testEnabledBefore);
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = row.file;
        page.cmdSoundFile.Enabled(false);
        page.cmdTestSound.Enabled(row.testEnabledBefore);
        SettingsWindow::Click(page.chkPlaySound);
        CHECK(page.cmdSoundFile.Enabled());
        CHECK(page.cmdTestSound.Enabled() == row.testEnabledAfter);
        CHECK(page.cmdApply.Enabled());
    }
}

TEST_CASE("clearing Play Sound, also by checking the beep, disables both sound buttons") {
    for (const bool byBeep : {false, true}) {
        CAPTURE(byBeep);
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = L"a.wav";
        SettingsWindow::Click(page.chkPlaySound);
        CHECK(page.cmdTestSound.Enabled());
        SettingsWindow::Click(byBeep ? page.chkBeep : page.chkPlaySound);
        CHECK_FALSE(page.cmdSoundFile.Enabled());
        CHECK_FALSE(page.cmdTestSound.Enabled());
    }
}

TEST_CASE("clearing the beep leaves Play Sound and its buttons as they are") {
    SettingsWindow page;
    SettingsWindow::Click(page.chkBeep);
    page.cmdApply.Enabled(false);
    page.cmdSoundFile.Enabled(false);
    SettingsWindow::Click(page.chkBeep);
    CHECK(page.chkPlaySound.Value() == 0);
    CHECK(page.chkBeep.Value() == 0);
    CHECK_FALSE(page.cmdSoundFile.Enabled());
    CHECK(page.cmdApply.Enabled());
}
