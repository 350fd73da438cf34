#include "standin/engine/call_record.h"

#include "platform/automation_error.h"

namespace {

constexpr const wchar_t* kMembers[] = {L"CreatePopup", L"ReleasePopup", L"State",          L"Start",
                                       L"Stop",        L"Pause",        L"ReloadSettings", L"LogFile"};

}  // namespace

void CallRecord::Receive(std::wstring_view member, const std::wstring& arguments) {
    if (m_stamped) m_text += std::to_wstring(GetTickCount()) + L' ';
    m_text += member;
    if (!arguments.empty()) m_text += L' ' + arguments;
    m_text += L"\r\n";

    const auto found = m_orders.find(member);
    if (found == m_orders.end()) return;
    const Orders orders = found->second;
    m_orders.erase(found);
    Sleep(orders.delay);
    if (orders.death) Die();
    ThrowIfFailed(orders.result);
}

void CallRecord::FailNext(const std::wstring& member, HRESULT result) {
    if (SUCCEEDED(result)) RaiseError(ErrorNumber::InvalidProcedureCall);
    OrdersFor(member).result = result;
}

void CallRecord::DelayNext(const std::wstring& member, long milliseconds) {
    if (milliseconds < 0) RaiseError(ErrorNumber::InvalidProcedureCall);
    OrdersFor(member).delay = static_cast<DWORD>(milliseconds);
}

void CallRecord::DieIn(const std::wstring& member) {
    OrdersFor(member).death = true;
}

void CallRecord::Reset() noexcept {
    m_text.clear();
    m_stamped = false;
    m_orders.clear();
}

CallRecord::Orders& CallRecord::OrdersFor(const std::wstring& member) {
    for (const wchar_t* const known : kMembers) {
        if (lstrcmpiW(known, member.c_str()) == 0) return m_orders[known];
    }
    RaiseError(ErrorNumber::InvalidProcedureCall);
}
