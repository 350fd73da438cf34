#include "platform/automation_error.h"

namespace {

HRESULT WithNumber(HRESULT code) {
    switch (code) {
        case DISP_E_TYPEMISMATCH:
            return HresultOf(ErrorNumber::TypeMismatch);
        case DISP_E_OVERFLOW:
            return HresultOf(ErrorNumber::Overflow);
        default:
            return code;
    }
}

}  // namespace

AutomationError::AutomationError(HRESULT code) noexcept : m_code(WithNumber(code)) {}

void RaiseError(ErrorNumber number) {
    throw AutomationError(HresultOf(number));
}

void ThrowIfFailed(HRESULT result) {
    if (FAILED(result)) throw AutomationError(result);
}

void ThrowIfWin32Failed(LSTATUS status) {
    ThrowIfFailed(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

void ThrowLastError() {
    const DWORD error = GetLastError();
    throw AutomationError(error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error));
}
