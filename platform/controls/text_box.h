#pragma once

#include "platform/controls/control.h"

// A single-line text box.
class TextBox final : public Control {
public:
    TextBox(const wchar_t* name, int id) : Control(ControlKind::TextBox, name, id) {}

    // Raised at every change of the text, by the user or by code.
    Event Change;

    // Raised when a key is released in the box.
    Event KeyUp;

    std::wstring Text() const { return WindowText(); }
    void Text(const std::wstring& text) { WindowText(text); }

    // The most characters a user can type; code may set more.
    void MaxLength(int characters) { Send(EM_SETLIMITTEXT, static_cast<WPARAM>(characters)); }

    // Selects length characters from start on; both are clipped at the end of the text. 0 characters place
    // the caret.
    void Select(int start, int length);

    void OnCommand(WORD code) override {
        if (code == EN_CHANGE) Raise(Change);
    }

protected:
    void OnAttached() override;

private:
    static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);
};
