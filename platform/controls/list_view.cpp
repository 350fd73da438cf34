#include "platform/controls/list_view.h"

#include <limits>

#include "platform/automation_error.h"

namespace {

constexpr size_t kFirstTextLength = 256;

// The pictures of the boxes, as states of a row.
constexpr UINT kUnchecked = INDEXTOSTATEIMAGEMASK(1);
constexpr UINT kChecked = INDEXTOSTATEIMAGEMASK(2);

}  // namespace

void ListView::OnAttached() {
    Send(LVM_SETEXTENDEDLISTVIEWSTYLE, 0,
         LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER);
}

void ListView::AddColumn(const wchar_t* heading) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_SUBITEM;
    column.pszText = const_cast<wchar_t*>(heading);
    const auto header = reinterpret_cast<HWND>(Send(LVM_GETHEADER));
    column.iSubItem = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    Send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(column.iSubItem), reinterpret_cast<LPARAM>(&column));
}

int ListView::Width() const noexcept {
    RECT bounds{};
    GetWindowRect(Hwnd(), &bounds);
    return bounds.right - bounds.left;
}

int ListView::Add(const std::wstring& text) {
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = std::numeric_limits<int>::max();  // behind all rows
    item.iImage = m_rowImage;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    m_settingCheck = true;
    const LRESULT index = Send(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    m_settingCheck = false;
    if (index < 0 || Hwnd() == nullptr) RaiseError(ErrorNumber::InvalidProcedureCall);
    return static_cast<int>(index) + 1;
}

void ListView::Remove(int position) {
    CheckPosition(position);
    Send(LVM_DELETEITEM, static_cast<WPARAM>(position - 1));
}

std::wstring ListView::SubItem(int position, int subItem) const {
    CheckPosition(position);
    LVITEMW item{};
    item.iSubItem = subItem;
    std::wstring text(kFirstTextLength, L'\0');
    for (;;) {
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size());
        const auto length = static_cast<size_t>(
            Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(position - 1), reinterpret_cast<LPARAM>(&item)));
        // A full buffer may hold a text that was cut off.
        if (length + 1 < text.size()) {
            text.resize(length);
            return text;
        }
        text.resize(text.size() * 2);
    }
}

void ListView::SubItem(int position, int subItem, const std::wstring& text) {
    CheckPosition(position);
    LVITEMW item{};
    item.iSubItem = subItem;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    Send(LVM_SETITEMTEXTW, static_cast<WPARAM>(position - 1), reinterpret_cast<LPARAM>(&item));
}

bool ListView::Checked(int position) const {
    CheckPosition(position);
    return Send(LVM_GETITEMSTATE, static_cast<WPARAM>(position - 1), LVIS_STATEIMAGEMASK) == kChecked;
}

void ListView::Checked(int position, bool checked) {
    CheckPosition(position);
    LVITEMW item{};
    item.state = checked ? kChecked : kUnchecked;
    item.stateMask = LVIS_STATEIMAGEMASK;
    m_settingCheck = true;
    Send(LVM_SETITEMSTATE, static_cast<WPARAM>(position - 1), reinterpret_cast<LPARAM>(&item));
    m_settingCheck = false;
}

LRESULT ListView::OnNotify(const NMHDR& header) {
    if (header.code != static_cast<UINT>(LVN_ITEMCHANGED) || m_settingCheck) return 0;
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
    const UINT changed = (change.uOldState ^ change.uNewState) & LVIS_STATEIMAGEMASK;
    // A new row comes with a change from no state image to the empty box.
    const bool isNewRow = (change.uOldState & LVIS_STATEIMAGEMASK) == 0;
    if ((change.uChanged & LVIF_STATE) != 0 && changed != 0 && !isNewRow) Raise(ItemCheck);
    return 0;
}

void ListView::CheckPosition(int position) const {
    if (position < 1 || position > Count()) RaiseError(ErrorNumber::SubscriptOutOfRange);
}
