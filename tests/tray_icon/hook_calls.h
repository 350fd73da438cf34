// Stands before the functions with which a window is hooked, and keeps each call.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time. The calls go on to Windows unless told otherwise.
class HookCalls {
public:
    HookCalls();
    HookCalls(const HookCalls&) = delete;
    HookCalls& operator=(const HookCalls&) = delete;
    ~HookCalls();

    bool failSetWindowLong = false;
    bool failSetProp = false;
    bool failRemoveProp = false;
    bool failGetProp = false;
    bool refuseForeground = false;

    // "SetProp OldWndProc", "SetWindowLong -4", "SetForegroundWindow", ... in the order made.
    std::vector<std::string> calls;
    std::vector<HWND> windows;
    std::vector<LONG> values;  // what was stored; 0 where nothing is

    void Forget();

private:
    static LONG WINAPI SetLong(HWND hwnd, int index, LONG value);
    static HANDLE WINAPI GetProperty(HWND hwnd, const char* name);
    static BOOL WINAPI SetProperty(HWND hwnd, const char* name, HANDLE value);
    static HANDLE WINAPI RemoveProperty(HWND hwnd, const char* name);
    static LRESULT WINAPI CallProcedure(WNDPROC procedure, HWND hwnd, UINT message, WPARAM wParam,
                                        LPARAM lParam);
    static BOOL WINAPI SetForeground(HWND hwnd);

    void Keep(std::string call, HWND hwnd, LONG value);

    const ImportPatch m_setWindowLong;
    const ImportPatch m_getProp;
    const ImportPatch m_setProp;
    const ImportPatch m_removeProp;
    const ImportPatch m_callWindowProc;
    const ImportPatch m_setForegroundWindow;
};
