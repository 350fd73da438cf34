// Wave files, heard through winmm.dll.
#pragma once

#include <string>

// Starts to play the file and returns at once. With no other flag than SND_ASYNC a missing file plays the
// system's default sound, and a sound cuts off the one before it. Plays nothing where Windows has no
// winmm.dll, as a server without the media components may.
void PlayWaveFile(const std::string& path);
