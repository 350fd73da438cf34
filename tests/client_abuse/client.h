// Clients of the manager.
#pragma once

#include <doctest.h>

#include <string>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "platform/text.h"
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

// Starts a client in a process of its own, which runs one of this suite's skipped test cases.
inline ProcessHandle StartClient(const char* test) {
    wchar_t program[MAX_PATH]{};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command =
        L'"' + std::wstring(program) + L"\" --no-skip --out=NUL \"--test-case=" + FromAnsi(test) + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    REQUIRE(CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                           nullptr, &startup, &process));
    CloseHandle(process.hThread);
    return ProcessHandle(process.hProcess);
}
