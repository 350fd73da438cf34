#include "platform/controls/control.h"

#include <algorithm>

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

void Control::Attach(HWND hwnd) {
    m_hwnd = hwnd;
    if (hwnd != nullptr) OnAttached();
}

void Control::Enabled(bool enabled) noexcept {
    // A disabled window that has the focus would swallow the keyboard: the next control takes over.
    if (!enabled && m_hwnd != nullptr && GetFocus() == m_hwnd) {
        SendMessageW(GetAncestor(m_hwnd, GA_ROOT), WM_NEXTDLGCTL, 0, FALSE);
    }
    EnableWindow(m_hwnd, enabled);
}

Control* FindControl(ControlTable controls, int id) {
    const auto found =
        std::find_if(controls.begin(), controls.end(), [&](const Control* c) { return c->Id() == id; });
    return found == controls.end() ? nullptr : *found;
}

Control* FindControl(ControlTable controls, std::wstring_view name) {
    const auto found = std::find_if(controls.begin(), controls.end(), [&](const Control* c) {
        return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, c->Name().data(),
                              static_cast<int>(c->Name().size()), name.data(),
                              static_cast<int>(name.size())) == CSTR_EQUAL;
    });
    return found == controls.end() ? nullptr : *found;
}

RedrawPause::RedrawPause(const Control& control) noexcept : m_hwnd(control.Hwnd()) {
    if (m_hwnd != nullptr) SendMessageW(m_hwnd, WM_SETREDRAW, FALSE, 0);
}

RedrawPause::~RedrawPause() {
    if (m_hwnd == nullptr) return;
    SendMessageW(m_hwnd, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(m_hwnd, nullptr, TRUE);
}
