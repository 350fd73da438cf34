// Counts the registry calls of this program.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time.
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
