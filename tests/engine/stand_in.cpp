#include "tests/engine/stand_in.h"

#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "platform/automation_error.h"
#include "tests/support/automation.h"
#include "tests/support/manager.h"
#include "tests/support/program.h"
#include "tests/support/wine.h"

// What another process returned is the first thing to know of a call that failed.
REGISTER_EXCEPTION_TRANSLATOR(const AutomationError& error) {
    char text[40];
    std::snprintf(text, sizeof(text), "Automation error 0x%08lX", static_cast<unsigned long>(error.Code()));
    return text;
}

namespace {

ComPtr<IDispatch>& KeptControl() {
    static ComPtr<IDispatch> control;
    return control;
}

bool TryStart(ComPtr<IDispatch>& control) {
    return ResumeNext([&] {
        StartServerAhead(kStandInProgram);
        KeepProcessIds(kStandInProgram);
        ComPtr<IDispatch> created = CreateByName(L"SentrelStandin.Control");
        Call(created.Get(), L"Reset");
        control = created;
    });
}

ComPtr<IDispatch> StartEngine() {
    ComPtr<IDispatch> control;
    if (TryStart(control)) return control;
    ForgetKilledServers();
    if (!PumpUntil([&] { return TryStart(control); }))
        throw std::runtime_error("the engine cannot be started");
    return control;
}

FileHandle OpenHeldEvent(const std::wstring& name) {
    const HANDLE event =
        OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, (L"SentrelStandin." + name).c_str());
    if (event == nullptr) throw std::runtime_error("the engine holds no such call");
    return FileHandle(event);
}

void Register(const wchar_t* command) {
    if (RunProgram(kStandInProgram, command) != 0)
        throw std::runtime_error("the engine's registration failed");
}

}  // namespace

HeldCall::HeldCall(const std::wstring& member)
    : m_arrived(OpenHeldEvent(member + L".Arrived")), m_letGo(OpenHeldEvent(member + L".LetGo")) {}

bool HeldCall::Arrives() const {
    return PumpUntil([this] { return HasArrived(); });
}

StandIn::StandIn() {
    if (!KeptControl() || !ResumeNext([] { Call(KeptControl().Get(), L"Reset"); }))
        KeptControl() = StartEngine();
    m_control = KeptControl();
}

Variant StandIn::Value(const wchar_t* property) const {
    return Get(Control(), property);
}

void StandIn::Set(const wchar_t* property, const Variant& value) const {
    Put(Control(), property, value);
}

void StandIn::Fail(const wchar_t* member, HRESULT failure) const {
    Call(Control(), L"FailNext", {member, static_cast<long>(failure)});
}

HeldCall StandIn::Hold(const wchar_t* member) const {
    Call(Control(), L"HoldNext", {member});
    return HeldCall(member);
}

void StandIn::DieIn(const wchar_t* member) const {
    Call(Control(), L"DieIn", {member});
}

void StandIn::Raise(const std::wstring& event) const {
    std::vector<Variant> arguments;
    if (event == L"Killed") arguments = {4711L, L"Win a prize"};
    Call(Control(), (L"Raise" + event).c_str(), arguments);
}

Lines StandIn::Calls() const {
    const std::wstring text = ToText(Value(L"Calls"));
    Lines lines;
    for (size_t start = 0, end; (end = text.find(L"\r\n", start)) != std::wstring::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

size_t StandIn::Count(const std::wstring& start) const {
    return static_cast<size_t>(
        std::ranges::count_if(Calls(), [&](const std::wstring& line) { return line.starts_with(start); }));
}

void StandIn::ClearCalls() const {
    Call(Control(), L"ClearCalls");
}

void StandIn::End(Death death) {
    if (death == Death::ByForce) {
        for (const DWORD id : ProcessesOf(kStandInProgram)) {
            const ProcessHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, id));
            TerminateProcess(process.Get(), 1);
        }
    } else if (KeptControl()) {
        ResumeNext([] { Call(KeptControl().Get(), L"Quit"); });
    }
    if (!Ended()) throw std::runtime_error("the engine does not end");
}

bool StandIn::Ended() {
    if (!ProgramEnds(kStandInProgram)) return false;
    KeptControl().Reset();
    return true;
}

NoEngineRegistered::NoEngineRegistered() {
    StandIn::End();
    Register(L"/UnregServer");
}

NoEngineRegistered::~NoEngineRegistered() {
    ResumeNext([] { Register(L"/RegServer"); });
}
