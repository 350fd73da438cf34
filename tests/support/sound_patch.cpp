#include "tests/support/sound_patch.h"

#include <string_view>

SoundPatch* SoundPatch::s_current = nullptr;

SoundPatch::SoundPatch(decltype(&sndPlaySoundA) replacement) : m_replacement(replacement) {
    s_current = this;
}

SoundPatch::~SoundPatch() {
    s_current = nullptr;
}

FARPROC WINAPI SoundPatch::Find(HMODULE library, LPCSTR name) {
    // The high word of a name is not 0; that of an ordinal is.
    if (HIWORD(name) != 0 && std::string_view(name) == "sndPlaySoundA") {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(s_current->m_replacement));
    }
    return s_current->m_patch.Original<decltype(&GetProcAddress)>()(library, name);
}
