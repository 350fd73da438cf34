// The stand-in engine, which the manager under test starts and calls, in a process of its own.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/com/com_ptr.h"
#include "tests/support/held_call.h"

inline constexpr wchar_t kStandInProgram[] = L"SentrelStandin.exe";

using Lines = std::vector<std::wstring>;

class StandIn {
public:
    // An engine as if it were new. Its process serves test after test, until one of them ends it.
    StandIn();

    IDispatch* Control() const noexcept { return m_control.Get(); }

    void Order(const wchar_t* member, const wchar_t* argument) const;
    void Fail(const wchar_t* member) const;
    HeldCall Hold(const wchar_t* member) const;  // the next call
    void DieIn(const wchar_t* member) const { Order(L"DieIn", member); }
    void State(long state) const;
    void RaiseByItself(bool raises) const;

    // Raises the events Killed, Paused, Started or Stopped.
    void Raise(const wchar_t* event) const;

    // What the engine was called, one line per call.
    Lines Calls() const;
    size_t Count(const std::wstring& start) const;  // of the lines that start so
    void ClearCalls() const;

    // What the clients hold of it.
    long Popups() const;
    long Connections() const;

    // Ends the process and waits until it is gone; the next StandIn starts another.
    enum class Death { ByOrder, ByForce };
    static void End(Death death = Death::ByOrder);

    // For a test in which the engine dies by itself: waits for that.
    static bool Ended();

private:
    ComPtr<IDispatch> m_control;
};

// Takes the engine out of the registry for as long as it lives.
class NoEngineRegistered {
public:
    NoEngineRegistered();
    NoEngineRegistered(const NoEngineRegistered&) = delete;
    NoEngineRegistered& operator=(const NoEngineRegistered&) = delete;
    ~NoEngineRegistered();
};
