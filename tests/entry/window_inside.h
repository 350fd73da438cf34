// The configuration window of this process as its user has it before him: its controls, and keys for it.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <stdexcept>

#include "app/resource.h"
#include "tests/entry/inside.h"

inline HWND Window() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
}

inline bool IsShown() {
    VARIANT_BOOL visible = VARIANT_FALSE;
    CHECK(g_frmConfig->get_Visible(&visible) == S_OK);
    return visible == VARIANT_TRUE;
}

// A control of the frame or of a page.
inline HWND ControlOf(int id) {
    if (const HWND control = GetDlgItem(Window(), id)) return control;
    for (HWND page = GetWindow(Window(), GW_CHILD); page != nullptr; page = GetWindow(page, GW_HWNDNEXT)) {
        if (const HWND control = GetDlgItem(page, id)) return control;
    }
    throw std::runtime_error("no such control");
}

inline void Click(int id) {
    SendMessageW(ControlOf(id), BM_CLICK, 0, 0);
}

inline int SelectedTab() {
    return static_cast<int>(SendDlgItemMessageW(Window(), IDC_TAB, TCM_GETCURSEL, 0, 0));
}

inline bool IsFormMessage(MSG message) {
    return g_frmConfig->IsFormMessage(message);
}

// A key that is pressed while this window has the focus.
inline MSG Key(HWND window, WPARAM key) {
    MSG message{};
    message.hwnd = window;
    message.message = WM_KEYDOWN;
    message.wParam = key;
    message.lParam = 1;
    return message;
}

// The state of the keyboard as this thread sees it.
struct HeldKeys {
    explicit HeldKeys(std::initializer_list<int> keys) {
        GetKeyboardState(before);
        BYTE state[256]{};
        for (const int key : keys)
            state[key] = 0x80;
        SetKeyboardState(state);
    }
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;
    ~HeldKeys() { SetKeyboardState(before); }

    BYTE before[256]{};
};
