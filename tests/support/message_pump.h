// Waiting, for a bounded time and not for a program that has crashed.
#pragma once

#include <windows.h>

#include <functional>

// How long a test waits for what must come: many times what a busy machine needs, so that only what never
// comes takes longer.
inline constexpr DWORD kPatience = 40000;  // milliseconds

// Dispatches messages until condition holds; false when it does not within the time, or when the manager
// crashes.
bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = kPatience);

void PumpFor(DWORD milliseconds);

// Dispatches what is in the queue.
void PumpPosted();
