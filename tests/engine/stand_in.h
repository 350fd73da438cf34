// The stand-in engine, in a process of its own: the manager under test calls it, and the test gives it
// orders.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"
#include "platform/handle.h"

inline constexpr wchar_t kStandInProgram[] = L"SentrelStandin.exe";

using Lines = std::vector<std::wstring>;

// A call of the engine that waits until the test lets it go. The engine serves other calls meanwhile.
class HeldCall {
public:
    explicit HeldCall(const std::wstring& member);
    ~HeldCall() { LetGo(); }

    bool HasArrived() const { return WaitForSingleObject(m_arrived.Get(), 0) == WAIT_OBJECT_0; }
    bool Arrives() const;  // whether the call comes
    void LetGo() const { SetEvent(m_letGo.Get()); }

private:
    const FileHandle m_arrived;
    const FileHandle m_letGo;
};

// What the engine refuses is thrown as AutomationError.
class StandIn {
public:
    // An engine as if it were new. Its process serves test after test, until one of them ends it.
    StandIn();

    IDispatch* Control() const noexcept { return m_control.Get(); }

    // Properties of its control.
    Variant Value(const wchar_t* property) const;
    void Set(const wchar_t* property, const Variant& value) const;
    long State() const { return ToLong(Value(L"State")); }
    void State(long state) const { Set(L"State", state); }

    // Orders for the next call of a member.
    void Fail(const wchar_t* member, HRESULT failure = E_FAIL) const;
    HeldCall Hold(const wchar_t* member) const;
    void DieIn(const wchar_t* member) const;

    // Raises the events Killed, Paused, Started or Stopped.
    void Raise(const std::wstring& event) const;

    // What the engine was called, one line per call.
    Lines Calls() const;
    size_t Count(const std::wstring& start) const;  // of the lines that start so
    void ClearCalls() const;

    // What the clients hold of it.
    long Popups() const { return ToLong(Value(L"Popups")); }
    long Connections() const { return ToLong(Value(L"Connections")); }

    // Ends the process and waits until it is gone; the next StandIn starts another.
    enum class Death { ByOrder, ByForce };
    static void End(Death death = Death::ByOrder);

    // For a test in which the engine ends by itself: waits for that.
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
