// Replaces sndPlaySoundA, which the program asks winmm.dll for with every sound.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <string_view>

#include "tests/support/import_patch.h"

class SoundPatch {
public:
    // Null: a winmm.dll without the function.
    explicit SoundPatch(decltype(&sndPlaySoundA) replacement) : m_replacement(replacement) {
        s_current = this;
    }
    SoundPatch(const SoundPatch&) = delete;
    SoundPatch& operator=(const SoundPatch&) = delete;

private:
    static FARPROC WINAPI Find(HMODULE library, LPCSTR name) {
        // The high word of a name is not 0; that of an ordinal is.
        if (HIWORD(name) != 0 && std::string_view(name) == "sndPlaySoundA")
            return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(s_current->m_replacement));
        return s_current->m_patch.Original<decltype(&GetProcAddress)>()(library, name);
    }

    static inline SoundPatch* s_current = nullptr;
    const decltype(&sndPlaySoundA) m_replacement;
    const ImportPatch m_patch{"kernel32.dll", "GetProcAddress", &Find};
};
