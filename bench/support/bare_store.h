// The registry calls of a first run, a load and a save of all settings, made directly: the same calls in the
// same order as the store's rules ask for, and nothing else.
#pragma once

#include <windows.h>

#include <array>
#include <string>
#include <vector>

// The stored texts, in the ANSI code page.
struct StoredValues {
    std::array<std::string, 4> options;  // chkPlaySound, chkBeep, txtSpeed, txtPause
    std::vector<std::string> exclude;
    std::vector<std::array<std::string, 4>> banners;  // name, width, height, use
    std::vector<std::array<std::string, 3>> search;   // name, address, use
    std::string soundFile;
    std::string pauseKey;
};

namespace BareStore {

// Writes the defaults, as a first start does, unless they are there. folder: the program's.
void FirstRun(const std::string& folder);
StoredValues Load();
void Save(const StoredValues& values);

}  // namespace BareStore
