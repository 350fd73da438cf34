#pragma once

#include "platform/controls/control.h"

// Static text. A frame is a label around other controls.
class Label final : public Control {
public:
    Label(const wchar_t* name, int id, ControlKind kind = ControlKind::Label) : Control(kind, name, id) {}

    std::wstring Caption() const { return WindowText(); }
    void Caption(const std::wstring& caption) { WindowText(caption); }
};
