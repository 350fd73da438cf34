// Replaces sndPlaySoundA, which the program asks winmm.dll for with every sound.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "tests/support/import_patch.h"

class SoundPatch {
public:
    // Null: a winmm.dll without the function.
    explicit SoundPatch(decltype(&sndPlaySoundA) replacement);
    SoundPatch(const SoundPatch&) = delete;
    SoundPatch& operator=(const SoundPatch&) = delete;
    ~SoundPatch();

private:
    static FARPROC WINAPI Find(HMODULE library, LPCSTR name);

    static SoundPatch* s_current;

    const decltype(&sndPlaySoundA) m_replacement;
    const ImportPatch m_patch{"kernel32.dll", "GetProcAddress", &Find};
};
