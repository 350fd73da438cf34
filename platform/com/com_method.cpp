#include "platform/com/com_method.h"

#include <oleauto.h>

#include "platform/com/com_ptr.h"

namespace {

constexpr DWORD kDescriptionLength = 512;

// The system has no texts for Automation's own numbers.
const wchar_t* NumberText(HRESULT code) {
    switch (code) {
        case HresultOf(ErrorNumber::InvalidProcedureCall):
            return L"Invalid procedure call or argument";
        case HresultOf(ErrorNumber::Overflow):
            return L"Overflow";
        case HresultOf(ErrorNumber::SubscriptOutOfRange):
            return L"Subscript out of range";
        case HresultOf(ErrorNumber::TypeMismatch):
            return L"Type mismatch";
        case HresultOf(ErrorNumber::ObjectNotSet):
            return L"Object variable not set";
        case HresultOf(ErrorNumber::InvalidPropertyValue):
            return L"Invalid property value";
        default:
            return nullptr;
    }
}

}  // namespace

HRESULT ReportError(HRESULT code) noexcept {
    wchar_t buffer[kDescriptionLength] = L"";
    const wchar_t* text = NumberText(code);
    if (text == nullptr) {
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       static_cast<DWORD>(code), 0, buffer, kDescriptionLength, nullptr);
        text = buffer;
    }

    ComPtr<ICreateErrorInfo> creator;
    ComPtr<IErrorInfo> info;
    if (SUCCEEDED(CreateErrorInfo(&creator)) && SUCCEEDED(creator.As(&info))) {
        creator->SetDescription(const_cast<LPOLESTR>(text));
        SetErrorInfo(0, info.Get());
    }
    return code;
}
