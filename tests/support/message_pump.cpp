#include "tests/support/message_pump.h"

#include <doctest.h>

#include "tests/support/manager.h"

namespace {

// The exit code of a program that nobody saved from an exception is that exception, an error of this
// severity.
constexpr DWORD kErrorSeverity = 0xC0000000;

ProcessHandle watched;
bool hasCrashed = false;

}  // namespace

bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        const DWORD elapsed = GetTickCount() - start;
        if (elapsed >= milliseconds || HasCrashed()) return false;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
            if (condition()) return true;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
    return true;
}

void PumpFor(DWORD milliseconds) {
    PumpUntil([] { return false; }, milliseconds);
}

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
