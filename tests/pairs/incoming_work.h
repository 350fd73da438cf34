// The columns of the table: everything that can come in while the manager waits for a call.
#pragma once

#include <span>

#include "tests/pairs/outgoing_calls.h"

// What came of it.
enum class Came {
    In,
    InVain,       // and found that it could do nothing
    NotPossible,  // nothing is there yet, or any more, that it could come through; nothing was done
};

struct IncomingWork {
    const char* name;
    Came (*come)(Case&);
    Mark mark = Mark::Untouched;

    bool takesWindow = false;     // the window is unloaded
    bool showsWindow = false;     // the window is made, if need be, and shown
    bool takesIcon = false;       // the icon may be removed, or another may be shown
    bool leavesCommands = false;  // to the engine
    bool typesText = false;       // into a text box
    int editsExclude = 0;         // rows more or less than the store has
    int editsBanners = 0;
    int editsSearch = 0;
};

std::span<const IncomingWork> IncomingCalls();
std::span<const IncomingWork> IncomingInputs();
std::span<const IncomingWork> IncomingEvents();

// All of them.
inline std::vector<IncomingWork> IncomingWorks() {
    std::vector<IncomingWork> works;
    for (const auto part : {IncomingCalls(), IncomingInputs(), IncomingEvents()})
        works.insert(works.end(), part.begin(), part.end());
    return works;
}
