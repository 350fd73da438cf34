// The stand-in engine, out of process, through COM alone. It must have been registered before.
#pragma once

#include <doctest.h>

#include <windows.h>
#include <objbase.h>

#include <span>
#include <string>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/event_connection.h"
#include "platform/com/variant.h"
#include "sentrel1.h"
#include "standin.h"
#include "tests/support/program.h"

inline constexpr wchar_t kEngineProgram[] = L"SentrelStandin.exe";

// A BSTR argument.
class Text {
public:
    Text(const std::wstring& text) : m_variant(text) {}
    operator BSTR() const { return m_variant.Value().bstrVal; }

private:
    Variant m_variant;
};

// The text of a BSTR, which is freed.
std::wstring TakeText(BSTR text);

inline std::vector<DWORD> EngineProcesses() {
    return ProcessesOf(kEngineProgram);
}

inline bool EngineEnds() {
    return ProgramEnds(kEngineProgram);
}

template <class Interface>
ComPtr<Interface> Create(REFCLSID classId) {
    ComPtr<Interface> object;
    const HRESULT result = CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object));
    REQUIRE(result == S_OK);
    return object;
}

// An engine object for the window 1234 and the form 5678, in mode 2.
ComPtr<_Popup> CreatePopup();

// Starting a process takes a second: one engine serves test after test, until one of them needs it ended.
ComPtr<_Control>& KeptEngine();

// Ends that engine and waits until its process is gone.
void EndEngine();

// An engine as if it were new.
struct EngineProcess {
    EngineProcess();

    std::wstring Calls() const;
    std::wstring LogFile() const;
    long State() const;

    ComPtr<_Control> control;
};

// Writes down the events of an engine object, each as a word and its arguments.
struct EventLog {
    explicit EventLog(IUnknown* popup);

    std::vector<std::wstring> events;
    EventConnection connection;

private:
    void Killed(const DISPPARAMS& arguments);
};

using Events = std::vector<std::wstring>;

// Every member of the engine's own interfaces, as a test calls it.
struct Member {
    const wchar_t* name;
    HRESULT (*call)(_SentrelApp& app, _Popup& popup);
};

std::span<const Member> Members();
