#include "tests/support/other_process.h"

#include <commctrl.h>

#include <stdexcept>

#include "tests/support/manager.h"

namespace {

// Sends a message whose structure, with the pointer member text, the window's process fills with a text:
// messages of the common controls carry addresses of that process.
template <class Item>
std::wstring ItemText(HWND window, UINT message, WPARAM wParam, Item item, wchar_t* Item::*text) {
    constexpr int kTextLength = 70000;
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    const ProcessHandle process(
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id));
    std::wstring result(kTextLength, L'\0');
    const size_t size = result.size() * sizeof(wchar_t);
    auto* const memory = static_cast<BYTE*>(
        VirtualAllocEx(process.Get(), nullptr, sizeof(Item) + size, MEM_COMMIT, PAGE_READWRITE));
    if (memory == nullptr) throw std::runtime_error("no memory in the other process");
    item.*text = reinterpret_cast<wchar_t*>(memory + sizeof(Item));
    item.cchTextMax = kTextLength;
    WriteProcessMemory(process.Get(), memory, &item, sizeof(Item), nullptr);
    SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(memory));
    const BOOL isRead = ReadProcessMemory(process.Get(), item.*text, result.data(), size, nullptr);
    VirtualFreeEx(process.Get(), memory, 0, MEM_RELEASE);
    if (!isRead) throw std::runtime_error("the other process cannot be read");
    result.resize(wcslen(result.c_str()));
    return result;
}

int ColumnCount(HWND list) {
    const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    return static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
}

std::wstring CellText(HWND list, int row, int column) {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iSubItem = column;
    return ItemText(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), item, &LVITEMW::pszText);
}

Rows TextRows(HWND window, UINT count, UINT length, UINT text) {
    Rows rows;
    const auto number = static_cast<WPARAM>(SendMessageW(window, count, 0, 0));
    for (WPARAM row = 0; row < number; ++row) {
        std::wstring buffer(static_cast<size_t>(SendMessageW(window, length, row, 0)) + 1, L'\0');
        SendMessageW(window, text, row, reinterpret_cast<LPARAM>(buffer.data()));
        buffer.pop_back();
        rows.push_back(buffer);
    }
    return rows;
}

BOOL CALLBACK Keep(HWND window, LPARAM windows) {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

}  // namespace

std::wstring ClassOf(HWND window) {
    wchar_t name[64]{};
    GetClassNameW(window, name, 64);
    return name;
}

std::wstring ShownText(HWND window) {
    std::wstring text(static_cast<size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    text.resize(static_cast<size_t>(
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

std::vector<HWND> DialogsOf(DWORD processId, bool haveOwner) {
    // Not by FindWindowEx: where the window that it goes on from is being destroyed, Wine's server runs for
    // ever.
    std::vector<HWND> windows;
    EnumWindows(Keep, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [&](HWND window) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        return process != processId || ClassOf(window) != L"#32770" ||
               (GetWindow(window, GW_OWNER) != nullptr) != haveOwner;
    });
    return windows;
}

std::wstring TabText(HWND tabs, int tab) {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    return ItemText(tabs, TCM_GETITEMW, static_cast<WPARAM>(tab), item, &TCITEMW::pszText);
}

Rows ListBoxRows(HWND list) {
    return TextRows(list, LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT);
}

Rows ComboItems(HWND combo) {
    return TextRows(combo, CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT);
}

Rows Headings(HWND list) {
    Rows headings;
    for (int column = 0; column < ColumnCount(list); ++column) {
        LVCOLUMNW item{};
        item.mask = LVCF_TEXT;
        headings.push_back(
            ItemText(list, LVM_GETCOLUMNW, static_cast<WPARAM>(column), item, &LVCOLUMNW::pszText));
    }
    return headings;
}

Rows ListViewRows(HWND list) {
    Rows rows;
    const auto count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    for (int row = 0; row < count; ++row) {
        std::wstring text = CellText(list, row, 0);
        for (int column = 1; column < ColumnCount(list); ++column)
            text += L'|' + CellText(list, row, column);
        const auto state = static_cast<UINT>(
            SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK));
        if (state == INDEXTOSTATEIMAGEMASK(2)) text += L"|x";
        rows.push_back(text);
    }
    return rows;
}

void TypeInto(HWND box, const std::wstring& text) {
    SendMessageW(box, EM_SETSEL, 0, -1);
    if (text.empty()) SendMessageW(box, WM_CLEAR, 0, 0);
    for (const wchar_t character : text)
        SendMessageW(box, WM_CHAR, character, 1);
    SendMessageW(box, WM_KEYUP, VK_END, 1);
}

void ClickArrow(HWND spin, bool up) {
    RECT area{};
    GetClientRect(spin, &area);
    const LPARAM point = MAKELPARAM(area.right / 2, up ? area.bottom / 4 : area.bottom * 3 / 4);
    SendMessageW(spin, WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(spin, WM_LBUTTONUP, 0, point);
}
