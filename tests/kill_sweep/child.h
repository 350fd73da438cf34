// This program once more, in a process that ends by force in the midst of a run.
#pragma once

#include <windows.h>

#include <string>

#include "platform/handle.h"
#include "tests/support/manager.h"
#include "tests/support/memory_registry.h"

inline constexpr UINT kKilled = 77;
inline constexpr UINT kRanThrough = 78;

class Child {
public:
    // testCase: which of the skipped test cases it runs; call: the registry call, from 1, before which it
    // ends.
    Child(const std::string& testCase, long call);

    // Waits until it has ended and returns its exit code; past ten seconds it is ended, and the result is
    // WAIT_TIMEOUT.
    DWORD Wait();

    // What it has left in its registry. realSoftware: the user's Software key, opened before anything
    // redirected it. The registry is gone afterwards.
    RegistryContents TakeStore(HKEY realSoftware) const;

private:
    ProcessHandle m_process;
    DWORD m_id = 0;
};

// The call that this process, a child, was told.
long CallToEndAt();
