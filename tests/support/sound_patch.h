// Replaces sndPlaySoundA, which the program asks winmm.dll for with every sound.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <functional>
#include <string_view>

#include "tests/support/import_fake.h"

class SoundPatch {
public:
    // Without a body: a winmm.dll without the function.
    explicit SoundPatch(std::function<BOOL(LPCSTR path, UINT flags)> play) : m_play(std::move(play)) {
        s_current = this;
    }

private:
    static BOOL WINAPI Play(LPCSTR path, UINT flags) { return s_current->m_play(path, flags); }

    static inline SoundPatch* s_current = nullptr;
    const std::function<BOOL(LPCSTR path, UINT flags)> m_play;
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> m_find{
        "kernel32.dll", [this](HMODULE library, LPCSTR name) {
            // The high word of a name is not 0; that of an ordinal is.
            if (HIWORD(name) == 0 || std::string_view(name) != "sndPlaySoundA")
                return m_find.Original(library, name);
            return m_play ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Play)) : nullptr;
        }};
};
