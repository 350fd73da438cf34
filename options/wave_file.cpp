#include "options/wave_file.h"

#include <windows.h>
#include <mmsystem.h>

#include "platform/system_library.h"

// Windows looks for winmm.dll beside the program before main can confine the search to the system's folder,
// as it does for every library that is imported plainly and is not one of those it always takes from there.
void PlayWaveFile(const std::string& path) {
    if (auto* const play =
            FunctionOf<decltype(sndPlaySoundA)>(LoadSystemLibrary(L"winmm.dll"), "sndPlaySoundA")) {
        play(path.c_str(), SND_ASYNC);
    }
}
