// The table of all pairs. Its rows are the calls that the manager makes out of its own code, its columns
// everything that can come in while it waits for one, before the reply and behind it.
#pragma once

#include <functional>
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

struct OutgoingTraits {
    void (*prepare)(Case&) = [](Case&) {};  // makes the manager ready for the call
    Mark mark = Mark::Untouched;
    bool isLoad = false;  // settings are being loaded meanwhile
    bool hasOneMoment = false;
    bool leavesCommands = false;  // to the engine
};

struct OutgoingCall {
    std::string name;
    const char* call;     // as Outside::LetIn names it
    void (*make)(Case&);  // brings it about; the window exists by then unless IsStart()
    OutgoingTraits traits = {};

    bool IsStart() const;   // the window is made meanwhile
    bool IsExit() const;    // the window goes for good, as it does in ReleaseConfig
    bool IsUnload() const;  // the window goes
};

std::span<const OutgoingCall> OutgoingCalls();

// What came of a piece of work that came in.
enum class Came {
    In,
    InVain,       // and found that it could do nothing
    NotPossible,  // nothing is there yet, or any more, that it could come through; nothing was done
};

struct IncomingTraits {
    Mark mark = Mark::Untouched;
    bool takesWindow = false;     // the window is unloaded
    bool showsWindow = false;     // the window is made, if need be, and shown
    bool takesIcon = false;       // the icon may be removed, or another may be shown
    bool leavesCommands = false;  // to the engine
    bool typesText = false;       // into a text box
    int editedList = 0;
    int edit = 0;  // rows that it has more or less than the store
};

struct IncomingWork {
    std::string name;
    std::function<Came(Case&)> come;
    IncomingTraits traits = {};
};

// What clients call; what the user, the system, the engine and the timers bring.
const std::vector<IncomingWork>& IncomingWorks();

// Goes through these rows with all columns, prints how many pairs there were, and checks each.
void RunRows(bool (*isWanted)(const OutgoingCall&));
