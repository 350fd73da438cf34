#include "tests/tray_icon/hook_calls.h"

#include <utility>

namespace {

HookCalls* current = nullptr;

LONG NumberOf(HANDLE value) {
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(value));
}

}  // namespace

HookCalls::HookCalls()
    : m_setWindowLong("user32.dll", "SetWindowLongA", &SetLong),
      m_getProp("user32.dll", "GetPropA", &GetProperty),
      m_setProp("user32.dll", "SetPropA", &SetProperty),
      m_removeProp("user32.dll", "RemovePropA", &RemoveProperty),
      m_callWindowProc("user32.dll", "CallWindowProcA", &CallProcedure),
      m_setForegroundWindow("user32.dll", "SetForegroundWindow", &SetForeground) {
    current = this;
}

HookCalls::~HookCalls() {
    current = nullptr;
}

void HookCalls::Forget() {
    calls.clear();
    windows.clear();
    values.clear();
}

void HookCalls::Keep(std::string call, HWND hwnd, LONG value) {
    calls.push_back(std::move(call));
    windows.push_back(hwnd);
    values.push_back(value);
}

LONG WINAPI HookCalls::SetLong(HWND hwnd, int index, LONG value) {
    current->Keep("SetWindowLong " + std::to_string(index), hwnd, value);
    if (current->failSetWindowLong) return 0;
    return current->m_setWindowLong.Original<decltype(&SetLong)>()(hwnd, index, value);
}

HANDLE WINAPI HookCalls::GetProperty(HWND hwnd, const char* name) {
    current->Keep(std::string("GetProp ") + name, hwnd, 0);
    if (current->failGetProp) return nullptr;
    return current->m_getProp.Original<decltype(&GetProperty)>()(hwnd, name);
}

BOOL WINAPI HookCalls::SetProperty(HWND hwnd, const char* name, HANDLE value) {
    current->Keep(std::string("SetProp ") + name, hwnd, NumberOf(value));
    if (current->failSetProp) return FALSE;
    return current->m_setProp.Original<decltype(&SetProperty)>()(hwnd, name, value);
}

HANDLE WINAPI HookCalls::RemoveProperty(HWND hwnd, const char* name) {
    current->Keep(std::string("RemoveProp ") + name, hwnd, 0);
    if (current->failRemoveProp) return nullptr;
    return current->m_removeProp.Original<decltype(&RemoveProperty)>()(hwnd, name);
}

LRESULT WINAPI HookCalls::CallProcedure(WNDPROC procedure, HWND hwnd, UINT message, WPARAM wParam,
                                        LPARAM lParam) {
    current->Keep("CallWindowProc " + std::to_string(message), hwnd,
                  static_cast<LONG>(reinterpret_cast<LONG_PTR>(procedure)));
    return current->m_callWindowProc.Original<decltype(&CallProcedure)>()(procedure, hwnd, message, wParam,
                                                                          lParam);
}

BOOL WINAPI HookCalls::SetForeground(HWND hwnd) {
    current->Keep("SetForegroundWindow", hwnd, 0);
    return !current->refuseForeground;
}
