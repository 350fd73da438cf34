// What a caller learns of an error.
#include "platform/com/com_method.h"

#include <doctest.h>
#include <oleauto.h>

#include <string>

#include "platform/com/com_ptr.h"
#include "tests/support/shown_text.h"

TEST_CASE(
    "an error leaves its text for the caller: Automation's own numbers have texts of this program's, all "
    "others those of the system") {
    wchar_t denied[512]{};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   static_cast<DWORD>(E_ACCESSDENIED), 0, denied, 512, nullptr);
    const struct {
        HRESULT code;
        std::wstring text;
    } rows[] = {
        {HresultOf(ErrorNumber::InvalidProcedureCall), L"Invalid procedure call or argument"},
        {HresultOf(ErrorNumber::Overflow), L"Overflow"},
        {HresultOf(ErrorNumber::SubscriptOutOfRange), L"Subscript out of range"},
        {HresultOf(ErrorNumber::TypeMismatch), L"Type mismatch"},
        {HresultOf(ErrorNumber::ObjectNotSet), L"Object variable not set"},
        {HresultOf(ErrorNumber::InvalidPropertyValue), L"Invalid property value"},
        {E_ACCESSDENIED, denied},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        CHECK(ReportError(row.code) == row.code);
        ComPtr<IErrorInfo> info;
        REQUIRE(GetErrorInfo(0, &info) == S_OK);
        BSTR description = nullptr;
        CHECK(info->GetDescription(&description) == S_OK);
        CHECK(std::wstring(description, SysStringLen(description)) == row.text);
        SysFreeString(description);
    }
}
