#include "platform/controls/up_down.h"

#include <algorithm>

#include "platform/automation_error.h"
#include "platform/com/variant.h"

void UpDown::OnAttached() {
    Send(UDM_SETBUDDY, reinterpret_cast<WPARAM>(m_buddy.Hwnd()));
    Send(UDM_SETRANGE32, static_cast<WPARAM>(m_minimum), m_maximum);
    // Without this, holding an arrow down speeds up to steps of 5 and 20.
    UDACCEL step{0, 1};
    Send(UDM_SETACCEL, 1, reinterpret_cast<LPARAM>(&step));
}

void UpDown::FollowBuddy() {
    ResumeNext([&] { Send(UDM_SETPOS32, 0, ToLong(Variant(m_buddy.Text()))); });
}

// The spin control takes its place from the end of its buddy, whose bounds are the whole ones again. What a
// spin control does with those of a buddy that it leaves is not documented.
void UpDown::OnScaled() {
    RECT bounds{};
    GetWindowRect(m_buddy.Hwnd(), &bounds);
    Send(UDM_SETBUDDY);
    SetWindowPos(m_buddy.Hwnd(), nullptr, 0, 0, bounds.right - bounds.left, bounds.bottom - bounds.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Send(UDM_SETBUDDY, reinterpret_cast<WPARAM>(m_buddy.Hwnd()));
}

LRESULT UpDown::OnNotify(const NMHDR& header) {
    if (header.code != static_cast<UINT>(UDN_DELTAPOS)) return 0;
    const auto& move = reinterpret_cast<const NMUPDOWN&>(header);

    const std::wstring shown = m_buddy.Text();
    long value = move.iPos;
    ResumeNext([&] { value = ToLong(Variant(shown)); });
    value = std::clamp(value, static_cast<long>(m_minimum) - 1, static_cast<long>(m_maximum) + 1);
    value = std::clamp(value + move.iDelta, static_cast<long>(m_minimum), static_cast<long>(m_maximum));

    Send(UDM_SETPOS32, 0, value);
    if (TextOf(value) != shown) {
        m_buddy.Text(TextOf(value));
        Raise(Change);
    }
    return TRUE;  // the control's own step would not know what was typed
}
