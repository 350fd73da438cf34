#pragma once

#include "platform/controls/control.h"

// A push button.
class Button final : public Control {
public:
    Button(const wchar_t* name, int id) : Control(ControlKind::Button, name, id) {}

    Event Click;

    void OnCommand(WORD code) override {
        if (code == BN_CLICKED) Raise(Click);
    }
};
