#include "tests/support/test_window.h"

#include <commctrl.h>

#include <map>
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

const std::map<ControlKind, WindowKind> kKinds{
    {ControlKind::Button, {WC_BUTTONW, BS_PUSHBUTTON | WS_TABSTOP}},
    {ControlKind::CheckBox, {WC_BUTTONW, BS_AUTOCHECKBOX | WS_TABSTOP}},
    {ControlKind::OptionButton, {WC_BUTTONW, BS_AUTORADIOBUTTON | WS_TABSTOP}},
    {ControlKind::Frame, {WC_BUTTONW, BS_GROUPBOX}},
    {ControlKind::ComboBox, {WC_COMBOBOXW, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP}},
    {ControlKind::ListBox,
     {WC_LISTBOXW, LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_BORDER | WS_TABSTOP}},
    {ControlKind::ListView,
     {WC_LISTVIEWW, LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | WS_BORDER | WS_TABSTOP}},
    {ControlKind::TextBox, {WC_EDITW, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP}},
    {ControlKind::UpDown, {UPDOWN_CLASSW, UDS_ALIGNRIGHT | UDS_ARROWKEYS}},
    {ControlKind::Image, {WC_STATICW, SS_BITMAP | SS_NOTIFY}},
    {ControlKind::Label, {WC_STATICW, SS_NOTIFY}},
    {ControlKind::Link, {WC_LINK, WS_TABSTOP}},
    {ControlKind::TabStrip, {WC_TABCONTROLW, WS_TABSTOP}},
};

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
        const WindowKind& kind = kKinds.at(control->Kind());
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
    const int position = list.Add(L"");
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
