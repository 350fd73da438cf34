// The one error type of the program: an Automation error number, carried as its HRESULT.
#pragma once

#include <windows.h>

#include <exception>
#include <utility>

class AutomationError : public std::exception {
public:
    // code: a failing HRESULT. Conversion failures (DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW) become the numbers
    // that Automation programs know them by, 13 and 6.
    explicit AutomationError(HRESULT code) noexcept;

    HRESULT Code() const noexcept { return m_code; }
    const char* what() const noexcept override { return "Automation error"; }

private:
    HRESULT m_code;
};

// Numbers as a script's Err.Number shows them.
enum class ErrorNumber : int {
    InvalidProcedureCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    ObjectNotSet = 91,
    InvalidPropertyValue = 380,
    CancelSelected = 32755,
};

constexpr HRESULT HresultOf(ErrorNumber number) {
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, static_cast<int>(number));
}

[[noreturn]] void RaiseError(ErrorNumber number);

// Each throws AutomationError when result is a failure. The second takes what the registry functions return.
void ThrowIfFailed(HRESULT result);
void ThrowIfWin32Failed(LSTATUS status);

// For a call that has failed and tells why by GetLastError: a failure without an error code is E_FAIL.
[[noreturn]] void ThrowLastError();

// Runs one statement whose failure is to be ignored, so that the next one runs. Returns whether it ran
// through. What the standard library throws is such a failure too: to Automation, being out of memory is an
// error like others, number 7.
template <class Statement>
bool ResumeNext(Statement&& statement) {
    try {
        std::forward<Statement>(statement)();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
