// Stands before Shell_NotifyIconA and keeps each call.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

struct ShellCall {
    DWORD action;
    std::string record;  // as many bytes as cbSize says
    DWORD time;          // GetTickCount

    DWORD Number(size_t offset) const;
    std::string Tip() const { return record.substr(24); }
    DWORD Icon() const { return Number(20); }
};

// One at a time.
class ShellCalls {
public:
    ShellCalls();
    ShellCalls(const ShellCalls&) = delete;
    ShellCalls& operator=(const ShellCalls&) = delete;
    ~ShellCalls();

    // What the shell returns; TRUE where nothing is set.
    std::function<BOOL(DWORD action)> result;

    std::vector<ShellCall> calls;
    std::vector<DWORD> Actions() const;

private:
    static BOOL WINAPI Fake(DWORD action, NOTIFYICONDATAA* data);

    const ImportPatch m_patch;
};
