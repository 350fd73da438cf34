#include "bench/support/tabbed_dialog.h"

#include <commctrl.h>

#include <stdexcept>

#include "app/resource.h"

namespace {

constexpr const wchar_t* kCaptions[] = {L"Settings", L"Exclude", L"Log", L"Banners", L"Search", L"About"};
constexpr int kPageDialogs[] = {IDD_PAGE_SETTINGS, IDD_PAGE_EXCLUDE, IDD_PAGE_LOG,
                                IDD_PAGE_BANNERS,  IDD_PAGE_SEARCH,  IDD_PAGE_ABOUT};

HWND g_pages[6];
int g_shown = 0;

HWND Make(int dialog, HWND parent, DLGPROC procedure) {
    const HWND window =
        CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(dialog), parent, procedure, 0);
    if (window == nullptr) throw std::runtime_error("a dialog cannot be made");
    return window;
}

INT_PTR CALLBACK PageProcedure(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

INT_PTR CALLBACK FrameProcedure(HWND, UINT message, WPARAM, LPARAM lParam) {
    if (message != WM_NOTIFY) return FALSE;
    const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
    if (header.code != static_cast<UINT>(TCN_SELCHANGE)) return FALSE;
    ShowWindow(g_pages[g_shown], SW_HIDE);
    g_shown = TabCtrl_GetCurSel(header.hwndFrom);
    ShowWindow(g_pages[g_shown], SW_SHOW);
    return TRUE;
}

}  // namespace

HWND MakeTabbedDialog() {
    const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_STANDARD_CLASSES | ICC_LINK_CLASS |
                                                            ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES |
                                                            ICC_UPDOWN_CLASS};
    InitCommonControlsEx(&classes);
    const HWND frame = Make(IDD_CONFIG, nullptr, &FrameProcedure);
    const HWND tabs = GetDlgItem(frame, IDC_TAB);
    for (int i = 0; i < 6; ++i) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(kCaptions[i]);
        TabCtrl_InsertItem(tabs, i, &item);
    }
    RECT area{};
    GetWindowRect(tabs, &area);
    MapWindowPoints(HWND_DESKTOP, frame, reinterpret_cast<POINT*>(&area), 2);
    TabCtrl_AdjustRect(tabs, FALSE, &area);
    HWND previous = tabs;
    for (int i = 0; i < 6; ++i) {
        g_pages[i] = Make(kPageDialogs[i], frame, &PageProcedure);
        SetWindowPos(g_pages[i], previous, area.left, area.top, area.right - area.left,
                     area.bottom - area.top, SWP_NOACTIVATE);
        previous = g_pages[i];
    }
    g_shown = 0;
    ShowWindow(g_pages[0], SW_SHOW);
    return frame;
}
