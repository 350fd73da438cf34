// What a part calls and its owner sets.
#pragma once

#include <functional>

// The listener of an event; one an event.
using Event = std::function<void()>;

// Calls the listener, where there is one.
template <typename... Arguments>
void Raise(const std::function<void(Arguments...)>& listener, Arguments... arguments) {
    if (listener) listener(arguments...);
}
