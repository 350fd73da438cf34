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
    ClearedUnlessChanged,
};

struct OutgoingCall {
    const char* name;
    const char* call;  // as Outside::LetIn names it

    // Makes the manager ready for it and brings it about; the window exists by then unless IsStart().
    void (*prepare)(Case&) = [](Case&) {};
    void (*make)(Case&) = nullptr;

    Mark mark = Mark::Untouched;
    bool isLoad = false;  // settings are being loaded meanwhile
    bool hasOneMoment = false;

    bool IsEngine() const;        // the engine is called
    bool IsStart() const;         // the window is made meanwhile
    bool IsUnload() const;        // the window goes
    bool LeavesCommands() const;  // to the engine
};

std::span<const OutgoingCall> OutgoingCalls();
