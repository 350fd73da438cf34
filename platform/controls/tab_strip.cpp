#include "platform/controls/tab_strip.h"

void TabStrip::AddTab(const wchar_t* caption) {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<wchar_t*>(caption);
    Send(TCM_INSERTITEMW, static_cast<WPARAM>(Count()), reinterpret_cast<LPARAM>(&item));
}

void TabStrip::Selected(int tab) {
    if (tab == Selected()) return;
    Send(TCM_SETCURSEL, static_cast<WPARAM>(tab));
    Raise(Change);
}

RECT TabStrip::DisplayArea() const noexcept {
    RECT area{};
    GetWindowRect(Hwnd(), &area);
    MapWindowPoints(HWND_DESKTOP, GetParent(Hwnd()), reinterpret_cast<POINT*>(&area), 2);
    Send(TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    return area;
}

LRESULT TabStrip::OnNotify(const NMHDR& header) {
    if (header.code == static_cast<UINT>(TCN_SELCHANGE)) Raise(Change);
    return 0;
}
