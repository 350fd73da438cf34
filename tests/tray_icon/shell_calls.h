// Stands before Shell_NotifyIconA and keeps each call.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/import_fake.h"

struct ShellCall {
    DWORD action;
    std::string record;  // as many bytes as cbSize says

    DWORD Number(size_t offset) const {
        DWORD number = 0;
        std::memcpy(&number, record.data() + offset, sizeof(number));
        return number;
    }
    DWORD Icon() const { return Number(20); }
    std::string Tip() const { return record.substr(24); }
};

struct ShellCalls {
    // What the shell returns; TRUE where nothing is set.
    std::function<BOOL(DWORD action)> result;

    std::vector<ShellCall> calls;

    const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> fake{
        "shell32.dll", [this](DWORD action, NOTIFYICONDATAA* data) {
            const std::string record(reinterpret_cast<const char*>(data), data->cbSize);
            calls.push_back({action, record});
            return result ? result(action) : TRUE;
        }};
};
