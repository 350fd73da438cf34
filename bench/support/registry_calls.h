// The registry calls of a load and a save of all settings, made directly: the same calls in the same order as
// the store's rules ask for, and nothing else.
#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

// The stored texts, in the ANSI code page.
struct StoredValues {
    std::array<std::string, 4> options;  // chkPlaySound, chkBeep, txtSpeed, txtPause
    std::vector<std::string> exclude;
    std::vector<std::array<std::string, 4>> banners;  // name, width, height, use
    std::vector<std::array<std::string, 3>> search;   // name, address, use
    std::string soundFile;
    std::string pauseKey;
};

class BareStore {
public:
    StoredValues Load() const;
    void Save(const StoredValues& values) const;
};

// Counts the registry calls of this program.
class CallCount {
public:
    CallCount();
    CallCount(const CallCount&) = delete;
    CallCount& operator=(const CallCount&) = delete;
    ~CallCount();

    size_t Count() const;

    // Takes the counters out of the calls again.
    void Stop() const;

private:
    mutable std::vector<std::unique_ptr<ImportPatch>> m_patches;
};
