// Calls of an engine that may be busy.
#pragma once

#include <windows.h>

#include <functional>

#include "platform/generation.h"

// A refused call is made again after each period, for about ten seconds.
inline constexpr UINT kAgainInterval = 100;  // milliseconds
inline constexpr int kTriesAgain = 100;

// A busy engine may refuse to be called, and so may Windows while this thread handles a message that another
// program has sent: an engine's call with this result is worth another try later.
bool IsRefusedForNow(HRESULT result);

// Calls whose results are needed at once: while the engine is busy each is made again, and all of them
// together wait for about ten seconds at most. Meanwhile, as during the calls themselves, clients' calls,
// events and paint messages come in, and nothing that the user does. What Windows refuses in a sent message
// is not made again: no waiting helps before that has been handled.
//
// An IMessageFilter would have COM do the same, on Windows: Wine never asks it.
class PatientCalls {
public:
    // No call is made again when the connection is over.
    explicit PatientCalls(const Generation::Mark& connection) noexcept : m_connection(connection) {}

    // Throws what call has thrown the last time; AutomationError in place of std::bad_alloc.
    void Make(const std::function<void()>& call);

private:
    const Generation::Mark m_connection;
    int m_triesLeft = kTriesAgain;
};
