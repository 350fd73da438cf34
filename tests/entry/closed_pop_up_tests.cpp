// What the whole window makes of a pop-up that the engine has closed.
#include <doctest.h>

#include <string>
#include <vector>

#include "options/resource.h"
#include "platform/text.h"
#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"
#include "tests/support/sound_patch.h"

namespace {

using Deeds = std::vector<std::string>;

constexpr DISPID kKilled = 1;

const ImportPatch* timerPatch = nullptr;

BOOL WINAPI Play(LPCSTR path, UINT flags) {
    StartJournal::Note(std::string("play ") + path + ' ' + std::to_string(flags));
    return TRUE;
}

BOOL WINAPI Beep(UINT type) {
    StartJournal::Note("beep " + std::to_string(type));
    return TRUE;
}

UINT_PTR WINAPI SetAnyTimer(HWND hwnd, UINT_PTR id, UINT period, TIMERPROC procedure) {
    StartJournal::Note("timer " + std::to_string(period));
    return timerPatch->Original<decltype(&SetAnyTimer)>()(hwnd, id, period, procedure);
}

// A window with a new store, and with an engine and a shell that are the test's.
struct ListeningWindow : Journalled {
    ListeningWindow() {
        timerPatch = &m_timer;
        Instance(FormHide);
    }

    // What is done at once when a pop-up has been closed.
    Deeds Close() {
        journal.entries.clear();
        journal.engine.Raise(kKilled, {Variant(0x20304L), Variant(L"Win a prize")});
        Deeds deeds;
        for (const StartJournal::Entry& entry : journal.entries)
            deeds.push_back(entry.text);
        return deeds;
    }

private:
    const SoundPatch m_play{&Play};
    const ImportPatch m_beep{"user32.dll", "MessageBeep", &Beep};
    const ImportPatch m_timer{"user32.dll", "SetTimer", &SetAnyTimer};
};

}  // namespace

TEST_CASE_FIXTURE(
    ListeningWindow,
    "a closed pop-up starts the frames, then gives the notice that the window shows, saved or not") {
    const std::string loader = ToAnsi(g_strLoaderPath);
    const std::string sound = loader.substr(0, loader.find_last_of('\\')) + "\\Arc.wav";
    CHECK(Close() == Deeds{"timer 250", "play " + sound + " 1"});
    Click(IDC_CHKBEEP);
    CHECK(Close() == Deeds{"timer 250", "beep 0"});
}

TEST_CASE_FIXTURE(ListeningWindow,
                  "the window's frames are its three tray pictures, and then its resting icon with its tip") {
    const auto& calls = journal.iconCalls;
    REQUIRE(calls.size() == 1);
    Close();
    REQUIRE(PumpUntil([&] { return calls.size() >= 6; }));
    std::vector<DWORD> actions;
    for (const auto& call : calls)
        actions.push_back(call.action);
    CHECK(actions == std::vector<DWORD>{NIM_ADD, NIM_MODIFY, NIM_MODIFY, NIM_MODIFY, NIM_DELETE, NIM_ADD});
    const auto icon = [&](size_t call) { return calls[call].record.substr(20, 4); };
    for (size_t frame = 1; frame <= 3; ++frame) {
        for (size_t other = 0; other < frame; ++other)
            CHECK(icon(frame) != icon(other));
    }
    CHECK(icon(5) == icon(0));
    CHECK(calls[5].record.substr(24) == std::string("Calvane Sentrel\0", 16) + std::string(48, ' '));
}
