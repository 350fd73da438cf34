// Stands before the functions with which a window is hooked, and keeps each call.
#pragma once

#include <windows.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"
#include "tests/support/shown_text.h"

// One at a time. The calls go on to Windows unless told otherwise; SetForegroundWindow never does.
class HookCalls {
public:
    HookCalls() { s_current = this; }
    ~HookCalls() { s_current = nullptr; }

    // The functions that fail, by the names that they have in calls.
    std::set<std::string> failing;

    // "SetProp OldWndProc", "SetWindowLong -4", "SetForegroundWindow", ... in the order made.
    std::vector<std::string> calls;
    std::vector<HWND> windows;
    std::vector<LONG> values;  // what was stored; 0 where nothing is

    void Forget() {
        calls.clear();
        windows.clear();
        values.clear();
    }

private:
    // Returns whether the function fails.
    static bool Keep(const std::string& function, const std::string& what, HWND hwnd, const void* value) {
        s_current->calls.push_back(function + what);
        s_current->windows.push_back(hwnd);
        s_current->values.push_back(PtrToLong(value));
        return s_current->failing.contains(function);
    }

    static LONG WINAPI SetLong(HWND hwnd, int index, LONG value) {
        if (Keep("SetWindowLong", ' ' + std::to_string(index), hwnd, LongToPtr(value))) return 0;
        return s_current->m_setWindowLong.Original<decltype(&SetLong)>()(hwnd, index, value);
    }
    static HANDLE WINAPI GetProperty(HWND hwnd, const char* name) {
        if (Keep("GetProp", std::string(" ") + name, hwnd, nullptr)) return nullptr;
        return s_current->m_getProp.Original<decltype(&GetProperty)>()(hwnd, name);
    }
    static BOOL WINAPI SetProperty(HWND hwnd, const char* name, HANDLE value) {
        if (Keep("SetProp", std::string(" ") + name, hwnd, value)) return FALSE;
        return s_current->m_setProp.Original<decltype(&SetProperty)>()(hwnd, name, value);
    }
    static HANDLE WINAPI RemoveProperty(HWND hwnd, const char* name) {
        if (Keep("RemoveProp", std::string(" ") + name, hwnd, nullptr)) return nullptr;
        return s_current->m_removeProp.Original<decltype(&RemoveProperty)>()(hwnd, name);
    }
    static LRESULT WINAPI CallProcedure(WNDPROC procedure, HWND hwnd, UINT message, WPARAM wParam,
                                        LPARAM lParam) {
        Keep("CallWindowProc", ' ' + std::to_string(message), hwnd, reinterpret_cast<void*>(procedure));
        return s_current->m_callWindowProc.Original<decltype(&CallProcedure)>()(procedure, hwnd, message,
                                                                                wParam, lParam);
    }
    static BOOL WINAPI SetForeground(HWND hwnd) { return !Keep("SetForegroundWindow", "", hwnd, nullptr); }

    static inline HookCalls* s_current = nullptr;
    const ImportPatch m_setWindowLong{"user32.dll", "SetWindowLongA", &SetLong};
    const ImportPatch m_getProp{"user32.dll", "GetPropA", &GetProperty};
    const ImportPatch m_setProp{"user32.dll", "SetPropA", &SetProperty};
    const ImportPatch m_removeProp{"user32.dll", "RemovePropA", &RemoveProperty};
    const ImportPatch m_callWindowProc{"user32.dll", "CallWindowProcA", &CallProcedure};
    const ImportPatch m_setForegroundWindow{"user32.dll", "SetForegroundWindow", &SetForeground};
};
