// Stands before Shell_NotifyIconA and keeps each call.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

struct ShellCall {
    DWORD action;
    std::string record;  // as many bytes as cbSize says
    DWORD time;          // GetTickCount

    DWORD Number(size_t offset) const {
        DWORD number = 0;
        std::memcpy(&number, record.data() + offset, sizeof(number));
        return number;
    }
    std::string Tip() const { return record.substr(24); }
    DWORD Icon() const { return Number(20); }
};

// One at a time.
class ShellCalls {
public:
    ShellCalls() { s_current = this; }
    ~ShellCalls() { s_current = nullptr; }

    // What the shell returns; TRUE where nothing is set.
    std::function<BOOL(DWORD action)> result;

    std::vector<ShellCall> calls;

private:
    static BOOL WINAPI Fake(DWORD action, NOTIFYICONDATAA* data) {
        s_current->calls.push_back(
            {action, std::string(reinterpret_cast<const char*>(data), data->cbSize), GetTickCount()});
        return s_current->result ? s_current->result(action) : TRUE;
    }

    static inline ShellCalls* s_current = nullptr;
    const ImportPatch m_patch{"shell32.dll", "Shell_NotifyIconA", &Fake};
};
