#pragma once

#include "platform/automation_error.h"
#include "platform/controls/control.h"

// A two-state check box.
class CheckBox final : public Control {
public:
    CheckBox(const wchar_t* name, int id) : Control(ControlKind::CheckBox, name, id) {}

    // Raised when the user clicks, and when Value changes it, after the change: Windows itself is silent
    // then.
    Event Click;

    // 0 unchecked, 1 checked.
    short Value() const noexcept { return Send(BM_GETCHECK) == BST_CHECKED ? 1 : 0; }

    // Throws AutomationError (380) for any other number, and changes nothing.
    void Value(short value) {
        if (value != 0 && value != 1) RaiseError(ErrorNumber::InvalidPropertyValue);
        if (value == Value()) return;
        Send(BM_SETCHECK, value == 1 ? BST_CHECKED : BST_UNCHECKED);
        Raise(Click);
    }

    void OnCommand(WORD code) override {
        if (code == BN_CLICKED) Raise(Click);
    }
};
