#include "tests/support/message_pump.h"

#include "tests/support/crash_watch.h"

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

void PumpPosted() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
