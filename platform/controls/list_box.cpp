#include "platform/controls/list_box.h"

#include "platform/automation_error.h"

std::wstring ListBox::List(int row) const {
    std::wstring text;
    List(row, Length(row), text);
    return text;
}

void ListBox::List(int row, size_t length, std::wstring& text) const {
    text.resize(length);
    Send(LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.data()));
}

size_t ListBox::Length(int row) const {
    const LRESULT length = Send(LB_GETTEXTLEN, static_cast<WPARAM>(row));
    if (row < 0 || length == LB_ERR) RaiseError(ErrorNumber::InvalidProcedureCall);
    return static_cast<size_t>(length);
}

void ListBox::AddItem(const std::wstring& text, int row) {
    if (Send(LB_INSERTSTRING, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.c_str())) < 0) {
        RaiseError(ErrorNumber::InvalidProcedureCall);
    }
}

void ListBox::RemoveItem(int row) {
    if (row < 0 || row >= ListCount()) RaiseError(ErrorNumber::InvalidProcedureCall);
    if (row == ListIndex()) Send(LB_SETCURSEL, static_cast<WPARAM>(-1));
    Send(LB_DELETESTRING, static_cast<WPARAM>(row));
}

void ListBox::ListIndex(int row) {
    if (row < -1 || row >= ListCount()) RaiseError(ErrorNumber::InvalidPropertyValue);
    if (row == ListIndex()) return;
    Send(LB_SETCURSEL, static_cast<WPARAM>(row));
    Raise(Click);
}
