#include "tests/engine/stand_in.h"

#include <algorithm>
#include <stdexcept>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"

namespace {

ComPtr<IDispatch>& KeptControl() {
    static ComPtr<IDispatch> control;
    return control;
}

bool TryStart(ComPtr<IDispatch>& control) {
    return ResumeNext([&] {
        StartServerAhead(kStandInProgram);
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

void Register(const wchar_t* command) {
    if (RunProgram(kStandInProgram, command) != 0)
        throw std::runtime_error("the engine's registration failed");
}

}  // namespace

StandIn::StandIn() {
    if (!KeptControl() || !ResumeNext([] { Call(KeptControl().Get(), L"Reset"); }))
        KeptControl() = StartEngine();
    m_control = KeptControl();
}

void StandIn::Order(const wchar_t* member, const wchar_t* argument) const {
    Call(Control(), member, {argument});
}

void StandIn::Fail(const wchar_t* member) const {
    Call(Control(), L"FailNext", {member, static_cast<long>(E_FAIL)});
}

HeldCall StandIn::Hold(const wchar_t* member) const {
    Call(Control(), L"HoldNext", {member});
    return HeldCall(member);
}

void StandIn::State(long state) const {
    Put(Control(), L"State", state);
}

void StandIn::RaiseByItself(bool raises) const {
    Put(Control(), L"RaiseByItself", raises);
}

void StandIn::Raise(const wchar_t* event) const {
    const std::wstring member = std::wstring(L"Raise") + event;
    if (member == L"RaiseKilled") {
        Call(Control(), member.c_str(), {4711L, L"Win a prize"});
    } else {
        Call(Control(), member.c_str());
    }
}

Lines StandIn::Calls() const {
    const std::wstring text = ToText(Get(Control(), L"Calls"));
    Lines lines;
    for (size_t start = 0, end; (end = text.find(L"\r\n", start)) != std::wstring::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

size_t StandIn::Count(const std::wstring& start) const {
    const Lines lines = Calls();
    return static_cast<size_t>(std::count_if(
        lines.begin(), lines.end(), [&](const std::wstring& line) { return line.starts_with(start); }));
}

void StandIn::ClearCalls() const {
    Call(Control(), L"ClearCalls");
}

long StandIn::Popups() const {
    return ToLong(Get(Control(), L"Popups"));
}

long StandIn::Connections() const {
    return ToLong(Get(Control(), L"Connections"));
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
