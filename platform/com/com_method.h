// The boundary of COM: no exception leaves the program, every error becomes an HRESULT with its text.
#pragma once

#include <windows.h>

#include <new>

#include "platform/automation_error.h"

// Leaves the description of code for the caller (IErrorInfo; EXCEPINFO through IDispatch) and returns code.
HRESULT ReportError(HRESULT code) noexcept;

// Runs the body of a COM method.
template <class Body>
HRESULT ComMethod(Body&& body) noexcept {
    try {
        body();
        return S_OK;
    } catch (const AutomationError& error) {
        return ReportError(error.Code());
    } catch (const std::bad_alloc&) {
        return ReportError(E_OUTOFMEMORY);
    } catch (...) {
        return ReportError(E_UNEXPECTED);
    }
}
