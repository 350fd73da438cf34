#pragma once

#include "platform/controls/control.h"
#include "platform/handle.h"

// A single-selection list box. Rows count from 0. It scrolls sideways as far as its widest row needs, and
// Ctrl+C copies the selected row.
class ListBox final : public Control {
public:
    ListBox(const wchar_t* name, int id) : Control(ControlKind::ListBox, name, id) {}
    ~ListBox() override;

    // Raised when the user selects a row, and when ListIndex changes the selection: Windows itself is silent
    // then.
    Event Click;

    int ListCount() const noexcept { return static_cast<int>(Send(LB_GETCOUNT)); }

    // The text of a row and its length in characters. Each throws AutomationError (5) for a row that does not
    // exist.
    std::wstring List(int row) const;
    size_t Length(int row) const;

    // For many rows: length is what Length has just returned for the row; the memory of text is used again.
    void List(int row, size_t length, std::wstring& text) const;

    // Throws AutomationError (5) when the row cannot be added.
    void AddItem(const std::wstring& text) { AddItem(text, -1); }
    void AddItem(const std::wstring& text, int row);

    // A removed row is no longer selected, and the click event is not raised for it.
    void RemoveItem(int row);
    void Clear() noexcept;

    // The selected row; -1 when none is.
    int ListIndex() const noexcept { return static_cast<int>(Send(LB_GETCURSEL)); }

    // Throws AutomationError (380) for a row that does not exist; -1 selects none.
    void ListIndex(int row);

    void OnCommand(WORD code) override {
        if (code == LBN_SELCHANGE) Raise(Click);
    }

protected:
    void OnAttached() override;

private:
    static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    int WidthOf(const std::wstring& text) const noexcept;
    void MeasureRows();
    void CopyRow() const;

    WNDPROC m_classProcedure = nullptr;

    // Holds the list's font, so that a row is measured without a message to the window.
    DeviceContext m_canvas;
    int m_widest = 0;
};
