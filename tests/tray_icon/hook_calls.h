// Stands before the functions with which a window is hooked, and keeps each call.
#pragma once

#include <windows.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"

// The calls go on to Windows unless told otherwise; SetForegroundWindow never does.
class HookCalls {
public:
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
    bool Fails(const std::string& function, const std::string& what, HWND hwnd, LONG value = 0) {
        calls.push_back(what.empty() ? function : function + ' ' + what);
        windows.push_back(hwnd);
        values.push_back(value);
        return failing.contains(function);
    }

    const ImportFake<"SetWindowLongA", decltype(&SetWindowLongA)> m_setLong{
        "user32.dll", [this](HWND hwnd, int index, LONG value) {
            const bool fails = Fails("SetWindowLong", std::to_string(index), hwnd, value);
            return fails ? 0 : m_setLong.Original(hwnd, index, value);
        }};
    const ImportFake<"GetPropA", decltype(&GetPropA)> m_getProp{
        "user32.dll", [this](HWND hwnd, LPCSTR name) {
            return Fails("GetProp", name, hwnd) ? nullptr : m_getProp.Original(hwnd, name);
        }};
    const ImportFake<"SetPropA", decltype(&SetPropA)> m_setProp{
        "user32.dll", [this](HWND hwnd, LPCSTR name, HANDLE value) {
            const bool fails = Fails("SetProp", name, hwnd, PtrToLong(value));
            return fails ? FALSE : m_setProp.Original(hwnd, name, value);
        }};
    const ImportFake<"RemovePropA", decltype(&RemovePropA)> m_removeProp{
        "user32.dll", [this](HWND hwnd, LPCSTR name) {
            return Fails("RemoveProp", name, hwnd) ? nullptr : m_removeProp.Original(hwnd, name);
        }};
    const ImportFake<"CallWindowProcA", decltype(&CallWindowProcA)> m_callProcedure{
        "user32.dll", [this](WNDPROC procedure, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
            Fails("CallWindowProc", std::to_string(message), hwnd);
            return m_callProcedure.Original(procedure, hwnd, message, wParam, lParam);
        }};
    const ImportFake<"SetForegroundWindow", decltype(&SetForegroundWindow)> m_setForeground{
        "user32.dll", [this](HWND hwnd) { return !Fails("SetForegroundWindow", "", hwnd); }};
};
