// Message loops of bounded length.
#pragma once

#include <windows.h>

#include <functional>

// Dispatches messages until condition holds; false when it does not within the time.
bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = 5000);

void PumpFor(DWORD milliseconds);
