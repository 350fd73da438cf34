#include "tray/patient_calls.h"

#include <objbase.h>

#include "platform/com/com_method.h"
#include "platform/handle.h"

namespace {

bool IsBusy(HRESULT result) {
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER;
}

// As a call out of the process waits.
void WaitAsInCall() {
    const EventHandle never(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE handle = never.Get();
    DWORD index = 0;
    CoWaitForMultipleHandles(0, kAgainInterval, 1, &handle, &index);
}

}  // namespace

bool IsRefusedForNow(HRESULT result) {
    return IsBusy(result) || result == RPC_E_CANTCALLOUT_ININPUTSYNCCALL;
}

void PatientCalls::Make(const std::function<void()>& call) {
    HRESULT result = ResultOf(call);
    while (IsBusy(result) && m_triesLeft > 0) {
        --m_triesLeft;
        WaitAsInCall();
        if (!m_connection.IsCurrent()) break;
        result = ResultOf(call);
    }
    ThrowIfFailed(result);
}
