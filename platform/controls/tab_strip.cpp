#include "platform/controls/tab_strip.h"

#include <iterator>

#include "platform/dpi.h"

namespace {

// Windows' own, in pixels of 96 dpi.
constexpr SIZE kPadding{6, 3};

constexpr size_t kLongestCaption = 31;

}  // namespace

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

void TabStrip::Scale(int dpi) noexcept {
    Send(TCM_SETPADDING, 0,
         MAKELPARAM(MulDiv(kPadding.cx, dpi, kDefaultDpi), MulDiv(kPadding.cy, dpi, kDefaultDpi)));
    // Tabs that are there already are measured once more when a text is set.
    wchar_t caption[kLongestCaption + 1]{};
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = caption;
    item.cchTextMax = static_cast<int>(std::size(caption));
    const auto itemParameter = reinterpret_cast<LPARAM>(&item);
    if (Send(TCM_GETITEMW, 0, itemParameter) != FALSE) Send(TCM_SETITEMW, 0, itemParameter);
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
