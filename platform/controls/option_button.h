#pragma once

#include "platform/controls/control.h"

// One of a group of option buttons.
class OptionButton final : public Control {
public:
    OptionButton(const wchar_t* name, int id) : Control(ControlKind::OptionButton, name, id) {}

    // Raised when the user selects the button, and when Value does, after the change: Windows itself is
    // silent then. Clearing raises nothing.
    Event Click;

    bool Value() const noexcept { return Send(BM_GETCHECK) == BST_CHECKED; }

    // Changes this button alone; the group's others are the caller's to clear.
    void Value(bool selected) {
        if (selected == Value()) return;
        Send(BM_SETCHECK, selected ? BST_CHECKED : BST_UNCHECKED);
        // The tab key stops at the selected button of a group, which is the one with the tab stop.
        const LONG style = GetWindowLongW(Hwnd(), GWL_STYLE);
        SetWindowLongW(Hwnd(), GWL_STYLE, selected ? style | WS_TABSTOP : style & ~WS_TABSTOP);
        if (selected) Raise(Click);
    }

    void OnCommand(WORD code) override {
        if (code == BN_CLICKED) Raise(Click);
    }
};
