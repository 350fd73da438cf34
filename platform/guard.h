// The boundary between Windows' callbacks and the program: no exception leaves it.
#pragma once

#include <utility>

// Runs the body of a window procedure or timer callback. What fails in it ends the body and nothing else: a
// callback has no caller who could be told.
template <class Body>
void Guarded(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        return;
    }
}
