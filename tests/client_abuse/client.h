// Clients of the manager.
#pragma once

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/manager.h"

// A client with an apartment of its own.
struct Client {
    Client() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ThrowIfFailed(
            CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control)));
        long showType = FormHide;
        ThrowIfFailed(control->ConfigInstance(&showType, &config));
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        config.Reset();
        control.Reset();
        CoUninitialize();
    }

    LONG Window() { return ToLong(Get(config.Get(), L"ConfigHwnd")); }

    ComPtr<_ConfigControl> control;
    ComPtr<IDispatch> config;
};
