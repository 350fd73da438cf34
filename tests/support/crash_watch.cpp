#include "tests/support/crash_watch.h"

#include <doctest.h>

#include "tests/support/manager.h"

namespace {

// The exit code of a program that nobody saved from an exception is that exception, an error of this
// severity.
constexpr DWORD kErrorSeverity = 0xC0000000;

ProcessHandle watched;
bool hasCrashed = false;

}  // namespace

void WatchForCrash(DWORD process) {
    hasCrashed = false;
    watched.Reset(process == 0 ? nullptr
                               : OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, process));
}

bool HasCrashed() {
    if (!watched || WaitForSingleObject(watched.Get(), 0) == WAIT_TIMEOUT) return hasCrashed;
    DWORD code = 0;
    GetExitCodeProcess(watched.Get(), &code);
    watched.Reset();
    hasCrashed = code >= kErrorSeverity;
    if (hasCrashed) FAIL_CHECK("the program under test crashed, exit code " << code);
    return hasCrashed;
}
