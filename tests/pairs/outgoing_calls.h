// The rows of the table: every call that the manager makes out of its own code, and how it comes to be made.
#pragma once

#include <span>

#include "tests/pairs/case.h"

// What becomes of the change mark.
enum class Mark {
    Untouched,
    Set,
    SetEvenWhileLoading,
    Cleared,
};

struct OutgoingCall {
    const char* name;
    const char* call;  // as Outside::LetIn names it

    // Makes the manager ready for it and brings it about; the window exists by then unless isStart.
    void (*prepare)(Case&);
    void (*make)(Case&);

    bool isEngine = false;  // the engine is called
    bool isStart = false;   // the window is made meanwhile
    bool isLoad = false;    // settings are being loaded meanwhile
    bool isUnload = false;  // the window goes
    Mark mark = Mark::Untouched;
    bool hasOneMoment = false;
    bool leavesCommands = false;  // to the engine
};

std::span<const OutgoingCall> OutgoingCalls();
