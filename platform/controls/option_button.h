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
        const bool isChange = selected != Value();
        // The message also gives the selected button the group's tab stop, and takes it from any other, which
        // the dialog resource may have given one. Where neither changes it would go round the group for
        // nothing.
        const bool hasTabStop = (GetWindowLongW(Hwnd(), GWL_STYLE) & WS_TABSTOP) != 0;
        if (isChange || hasTabStop != selected) Send(BM_SETCHECK, selected ? BST_CHECKED : BST_UNCHECKED);
        if (isChange && selected) Raise(Click);
    }

    // A click has selected the button; systems that do not know BM_SETDONTCLICK report one for the focus too.
    void OnCommand(WORD code) override {
        if (code == BN_CLICKED && Value()) Raise(Click);
    }

protected:
    // Otherwise a button that is not selected takes the focus for a click, and selects itself.
    void OnAttached() override { Send(BM_SETDONTCLICK, TRUE); }
};
