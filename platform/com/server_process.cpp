#include "platform/com/server_process.h"

#include <windows.h>
#include <objbase.h>

namespace {

bool stopping = false;

}  // namespace

namespace ServerProcess {

// CoReleaseServerProcess suspends the class objects in the same step in which the count reaches 0, so that a
// client arriving just then starts a new process instead of reaching a dying one.
void Lock() noexcept {
    CoAddRefServerProcess();
}

void Unlock() noexcept {
    if (CoReleaseServerProcess() == 0) PostQuitMessage(0);
}

void Stop() noexcept {
    stopping = true;
    CoSuspendClassObjects();
}

bool Stopping() noexcept {
    return stopping;
}

}  // namespace ServerProcess
