#include "tests/support/test_window.h"

#include <commctrl.h>

#include <sstream>

#include "tests/support/resource.h"

namespace {

constexpr int kControlHeight = 24;
constexpr int kControlWidth = 300;
constexpr int kListHeight = 120;

struct WindowKind {
    const wchar_t* windowClass;
    DWORD style;
};

WindowKind KindOf(const Control& control) {
    switch (control.Kind()) {
        case ControlKind::Button:
            return {WC_BUTTONW, BS_PUSHBUTTON | WS_TABSTOP};
        case ControlKind::CheckBox:
            return {WC_BUTTONW, BS_AUTOCHECKBOX | WS_TABSTOP};
        case ControlKind::OptionButton:
            return {WC_BUTTONW, BS_AUTORADIOBUTTON | WS_TABSTOP};
        case ControlKind::Frame:
            return {WC_BUTTONW, BS_GROUPBOX};
        case ControlKind::ComboBox:
            return {WC_COMBOBOXW, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP};
        case ControlKind::ListBox:
            return {WC_LISTBOXW, LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_BORDER | WS_TABSTOP};
        case ControlKind::ListView:
            return {WC_LISTVIEWW, LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | WS_BORDER | WS_TABSTOP};
        case ControlKind::TextBox:
            return {WC_EDITW, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP};
        case ControlKind::UpDown:
            return {UPDOWN_CLASSW, UDS_ALIGNRIGHT | UDS_ARROWKEYS};
        case ControlKind::TabStrip:
            return {WC_TABCONTROLW, WS_TABSTOP};
        case ControlKind::Image:
            return {WC_STATICW, SS_BITMAP | SS_NOTIFY};
        case ControlKind::Label:
            return {WC_STATICW, SS_NOTIFY};
        case ControlKind::Link:
            return {WC_LINK, WS_TABSTOP};
    }
    return {WC_STATICW, 0};
}

}  // namespace

TestWindow::TestWindow(std::vector<Control*> controls) : Dialog(IDD_EMPTY), m_controls(std::move(controls)) {
    Create(nullptr);
}

TestWindow::~TestWindow() {
    Destroy();
}

bool TestWindow::OnInit() {
    int top = 0;
    bool isOption = false;
    for (Control* const control : m_controls) {
        const WindowKind kind = KindOf(*control);
        // Option buttons that follow each other are a group; everything else stands by itself.
        const bool continuesGroup = isOption && control->Kind() == ControlKind::OptionButton;
        isOption = control->Kind() == ControlKind::OptionButton;
        const bool isTall =
            control->Kind() == ControlKind::ListBox || control->Kind() == ControlKind::ListView;
        const int height = isTall ? kListHeight : kControlHeight;
        const HWND child = CreateWindowExW(
            0, kind.windowClass, L"", WS_CHILD | WS_VISIBLE | (continuesGroup ? 0 : WS_GROUP) | kind.style, 0,
            top, kControlWidth, height, Hwnd(), reinterpret_cast<HMENU>(static_cast<INT_PTR>(control->Id())),
            GetModuleHandleW(nullptr), nullptr);
        control->Attach(child);
        top += height;
    }
    return true;
}

void AddRow(ListView& list, std::wstring row) {
    const bool isChecked = row.ends_with(L"|x");
    if (isChecked) row.resize(row.size() - 2);
    const int position = list.Add(list.Count() + 1, L"");
    std::wistringstream cells(row);
    std::wstring cell;
    for (int column = 0; std::getline(cells, cell, L'|'); ++column)
        list.SubItem(position, column, cell);
    list.Checked(position, isChecked);
}

std::vector<Control*> Join(std::initializer_list<ControlTable> groups) {
    std::vector<Control*> all;
    for (const ControlTable group : groups)
        all.insert(all.end(), group.begin(), group.end());
    return all;
}
