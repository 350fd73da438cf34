#pragma once

#include "platform/controls/control.h"

// A drop-down list: only its items can be chosen.
class ComboBox final : public Control {
public:
    ComboBox(const wchar_t* name, int id) : Control(ControlKind::ComboBox, name, id) {}

    // Raised when the user chooses an item, and when Text changes the choice: Windows itself is silent then.
    Event Click;

    // Raised when the text of the edit part changes, which a drop-down list does not have.
    Event Change;

    void AddItem(const wchar_t* item) { Send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item)); }

    // The chosen item; empty when none is.
    std::wstring Text() const { return WindowText(); }

    // Chooses the item with this text; letter case does not matter. Throws AutomationError (380) when there
    // is none, and leaves the choice as it was.
    void Text(const std::wstring& text);

    void OnCommand(WORD code) override;
};
