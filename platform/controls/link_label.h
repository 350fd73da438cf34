#pragma once

#include "platform/controls/control.h"

// A label that is one link, on a window of class SysLink. Windows gives it the colours and the cursor of
// links.
class LinkLabel final : public Control {
public:
    LinkLabel(const wchar_t* name, int id) : Control(ControlKind::Link, name, id) {}

    // Raised by a click, and by Enter and Space when the link has the focus.
    Event Click;

    // The text of the link, without the markup that the window keeps around it.
    std::wstring Caption() const;
    void Caption(const std::wstring& caption);

    LRESULT OnNotify(const NMHDR& header) override;

protected:
    void OnAttached() override;

private:
    static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);
};
