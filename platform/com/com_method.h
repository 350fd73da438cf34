// The boundary of COM: no exception leaves the program, every error becomes an HRESULT with its text.
#pragma once

#include <windows.h>

#include <new>
#include <type_traits>
#include <utility>

#include "platform/automation_error.h"
#include "platform/com/server_process.h"

// Leaves the description of code for the caller (IErrorInfo; EXCEPINFO through IDispatch) and returns code.
HRESULT ReportError(HRESULT code) noexcept;

// Runs body and returns how it ended; what body itself returns, where that is more than nothing.
template <class Body>
HRESULT ResultOf(Body&& body) noexcept {
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return S_OK;
        } else {
            return body();
        }
    } catch (const AutomationError& error) {
        return ReportError(error.Code());
    } catch (const std::bad_alloc&) {
        return ReportError(E_OUTOFMEMORY);
    } catch (...) {
        return ReportError(E_UNEXPECTED);
    }
}

// Runs the body of an object's member. While the process is about to end, every member but those of IUnknown
// returns CO_E_SERVER_STOPPING and does nothing.
template <class Body>
HRESULT ComMethod(Body&& body) noexcept {
    if (ServerProcess::Stopping()) return ReportError(CO_E_SERVER_STOPPING);
    return ResultOf(std::forward<Body>(body));
}
