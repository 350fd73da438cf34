// What a piece of code fails with.
#pragma once

#include <windows.h>

#include "platform/automation_error.h"

// S_OK where it raises no AutomationError.
template <class Body>
HRESULT ErrorOf(Body&& body) {
    try {
        body();
    } catch (const AutomationError& error) {
        return error.Code();
    }
    return S_OK;
}
