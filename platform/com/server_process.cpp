#include "platform/com/server_process.h"

#include <windows.h>
#include <objbase.h>

#include <vector>

namespace {

bool stopping = false;
std::vector<DWORD> registrations;

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
    // Suspended first, all of them at once; not every system has more than the name of that.
    CoSuspendClassObjects();
    for (const DWORD registration : registrations)
        CoRevokeClassObject(registration);
}

bool Stopping() noexcept {
    return stopping;
}

void Offer(DWORD registration) {
    registrations.push_back(registration);
}

}  // namespace ServerProcess
