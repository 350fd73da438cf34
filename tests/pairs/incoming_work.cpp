#include "tests/pairs/incoming_work.h"

std::vector<IncomingWork> IncomingWorks() {
    std::vector<IncomingWork> works;
    for (const auto part : {IncomingCalls(), IncomingInputs(), IncomingEvents()})
        works.insert(works.end(), part.begin(), part.end());
    return works;
}
