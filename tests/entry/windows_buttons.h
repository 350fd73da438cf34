// Buttons as Windows makes them, not as Wine does.
#pragma once

#include <windows.h>

#include <set>

// While it exists: an unchecked option button of this thread that gets the focus is clicked, and selects
// itself, unless it has been told not to (BM_SETDONTCLICK). One at a time.
class WindowsButtons {
public:
    WindowsButtons() : m_hook(SetWindowsHookExW(WH_CALLWNDPROCRET, Watch, nullptr, GetCurrentThreadId())) {
        s_silent.clear();
    }
    WindowsButtons(const WindowsButtons&) = delete;
    WindowsButtons& operator=(const WindowsButtons&) = delete;
    ~WindowsButtons() { UnhookWindowsHookEx(m_hook); }

private:
    static bool IsOptionButton(HWND window) {
        return (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
    }

    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == BM_SETDONTCLICK) {
            if (sent.wParam != FALSE) {
                s_silent.insert(sent.hwnd);
            } else {
                s_silent.erase(sent.hwnd);
            }
        }
        if (code == HC_ACTION && sent.message == WM_SETFOCUS && IsOptionButton(sent.hwnd) &&
            !s_silent.contains(sent.hwnd) && SendMessageW(sent.hwnd, BM_GETCHECK, 0, 0) != BST_CHECKED) {
            SendMessageW(sent.hwnd, BM_CLICK, 0, 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::set<HWND> s_silent;
    const HHOOK m_hook;
};
