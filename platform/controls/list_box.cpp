#include "platform/controls/list_box.h"

#include <algorithm>

#include "platform/automation_error.h"
#include "platform/clipboard.h"
#include "platform/guard.h"

namespace {

constexpr WPARAM kCtrlC = 3;

}  // namespace

ListBox::~ListBox() {
    SetWindowLongPtrW(Hwnd(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_classProcedure));
}

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
    const int width = WidthOf(text);
    if (width <= m_widest) return;
    m_widest = width;
    Send(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(m_widest));
}

void ListBox::RemoveItem(int row) {
    if (row < 0 || row >= ListCount()) RaiseError(ErrorNumber::InvalidProcedureCall);
    if (row == ListIndex()) Send(LB_SETCURSEL, static_cast<WPARAM>(-1));
    const int width = WidthOf(List(row));
    Send(LB_DELETESTRING, static_cast<WPARAM>(row));
    if (width == m_widest) MeasureRows();
}

void ListBox::Clear() noexcept {
    Send(LB_RESETCONTENT);
    m_widest = 0;
    Send(LB_SETHORIZONTALEXTENT, 0);
}

void ListBox::ListIndex(int row) {
    if (row < -1 || row >= ListCount()) RaiseError(ErrorNumber::InvalidPropertyValue);
    if (row == ListIndex()) return;
    Send(LB_SETCURSEL, static_cast<WPARAM>(row));
    Raise(Click);
}

// Not SetWindowSubclass: that looks for a property of the window in each message, which can take longer than
// the message itself, and a list of thousands of rows is read and filled by as many messages.
void ListBox::OnAttached() {
    m_canvas.Reset(CreateCompatibleDC(nullptr));
    MeasureRows();
    SetWindowLongPtrW(Hwnd(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_classProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(Hwnd(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Procedure)));
}

// With a little air behind the text.
int ListBox::WidthOf(const std::wstring& text) const noexcept {
    SIZE size{};
    GetTextExtentPoint32W(m_canvas.Get(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx + 2 * GetSystemMetrics(SM_CXEDGE);
}

void ListBox::MeasureRows() {
    const auto font = reinterpret_cast<HFONT>(Send(WM_GETFONT));
    SelectObject(m_canvas.Get(), font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    m_widest = 0;
    const int count = ListCount();
    for (int row = 0; row < count; ++row)
        m_widest = std::max(m_widest, WidthOf(List(row)));
    Send(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(m_widest));
}

void ListBox::CopyRow() const {
    const int row = ListIndex();
    if (row != -1) CopyToClipboard(Hwnd(), List(row));
}

LRESULT CALLBACK ListBox::Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& list = *reinterpret_cast<ListBox*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (message == WM_CHAR && wParam == kCtrlC) {
        Guarded([&] { list.CopyRow(); });
        return 0;
    }
    const LRESULT result = CallWindowProcW(list.m_classProcedure, hwnd, message, wParam, lParam);
    if (message == WM_SETFONT) Guarded([&] { list.MeasureRows(); });
    if (message == WM_NCDESTROY) list.m_canvas.Reset();  // the font goes with the dialog
    return result;
}
