// Wave files, heard through winmm.dll.
#pragma once

#include <string>

// The path under which a file can be stored and played: that of its short name where the ANSI code page
// cannot hold path, and path itself where it has none, or the code page cannot hold that either.
std::wstring PlayablePath(const std::wstring& path);

// Starts to play the file and returns at once. With no other flag than SND_ASYNC a missing file plays the
// system's default sound, and a sound cuts off the one before it. Plays nothing where Windows has no
// winmm.dll, as a server without the media components may.
void PlayWaveFile(const std::string& path);
