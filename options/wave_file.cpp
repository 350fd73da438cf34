#include "options/wave_file.h"

#include <windows.h>
#include <mmsystem.h>

#include "platform/system_library.h"
#include "platform/text.h"

namespace {

bool HasAnsiForm(const std::wstring& text) {
    return FromAnsi(ToAnsi(text)) == text;
}

}  // namespace

std::wstring PlayablePath(const std::wstring& path) {
    if (HasAnsiForm(path)) return path;
    std::wstring shortPath(GetShortPathNameW(path.c_str(), nullptr, 0), L'\0');
    const DWORD length =
        GetShortPathNameW(path.c_str(), shortPath.data(), static_cast<DWORD>(shortPath.size()));
    if (length == 0 || length >= shortPath.size()) return path;
    shortPath.resize(length);
    return HasAnsiForm(shortPath) ? shortPath : path;
}

// Windows looks for winmm.dll beside the program before main can confine the search to the system's folder,
// as it does for every library that is imported plainly and is not one of those it always takes from there.
void PlayWaveFile(const std::string& path) {
    if (auto* const play =
            FunctionOf<decltype(sndPlaySoundA)>(LoadSystemLibrary(L"winmm.dll"), "sndPlaySoundA")) {
        play(path.c_str(), SND_ASYNC);
    }
}
