#include "standin/engine/call_record.h"

#include <objbase.h>

#include "platform/automation_error.h"

namespace {

constexpr const wchar_t* kMembers[] = {L"CreatePopup", L"ReleasePopup", L"State",          L"Start",
                                       L"Stop",        L"Pause",        L"ReloadSettings", L"LogFile"};

constexpr DWORD kLongestHold = 60000;  // milliseconds

// A manual-reset event, not set, that other processes know by its name.
FileHandle NamedEvent(const std::wstring& name) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    if (event == nullptr) throw AutomationError(HRESULT_FROM_WIN32(GetLastError()));
    ResetEvent(event);
    return FileHandle(event);
}

}  // namespace

void CallRecord::Receive(std::wstring_view member, const std::wstring& arguments) {
    if (m_stamped) m_text += std::to_wstring(GetTickCount()) + L' ';
    m_text += member;
    if (!arguments.empty()) m_text += L' ' + arguments;
    m_text += L"\r\n";

    const auto found = m_orders.find(member);
    if (found == m_orders.end()) return;
    const Orders orders = std::move(found->second);
    m_orders.erase(found);
    if (orders.letGo) {
        SetEvent(orders.arrived.Get());
        // Serves other calls meanwhile, as an engine does that calls others itself.
        HANDLE letGo = orders.letGo.Get();
        DWORD index = 0;
        CoWaitForMultipleHandles(0, kLongestHold, 1, &letGo, &index);
    }
    if (orders.death) Die();
    ThrowIfFailed(orders.result);
}

void CallRecord::FailNext(const std::wstring& member, HRESULT result) {
    if (SUCCEEDED(result)) RaiseError(ErrorNumber::InvalidProcedureCall);
    m_orders[Known(member)].result = result;
}

void CallRecord::HoldNext(const std::wstring& member) {
    const std::wstring name = std::wstring(L"SentrelStandin.") + Known(member);
    FileHandle arrived = NamedEvent(name + L".Arrived");
    FileHandle letGo = NamedEvent(name + L".LetGo");
    Orders& orders = m_orders[Known(member)];
    orders.arrived = std::move(arrived);
    orders.letGo = std::move(letGo);
}

void CallRecord::DieIn(const std::wstring& member) {
    m_orders[Known(member)].death = true;
}

void CallRecord::Reset() noexcept {
    m_text.clear();
    m_stamped = false;
    m_orders.clear();
}

const wchar_t* CallRecord::Known(const std::wstring& member) {
    for (const wchar_t* const known : kMembers) {
        if (lstrcmpiW(known, member.c_str()) == 0) return known;
    }
    RaiseError(ErrorNumber::InvalidProcedureCall);
}
