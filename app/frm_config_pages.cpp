// The tabs of the configuration window and the way through them by keyboard.
#include "app/frm_config.h"

#include <utility>

#include "platform/controls/access_keys.h"
#include "platform/dpi.h"

namespace {

constexpr int kAboutPage = 5;
constexpr SIZE kRowPicture{22, 16};  // in pixels of 96 dpi

bool IsDown(int key) {
    return GetKeyState(key) < 0;
}

}  // namespace

void frmConfig::MakePages() {
    // The tabs decide how much space is left for the pages.
    m_controls.tab.Scale(Dpi());
    for (const ConfigPage& page : m_pages)
        m_controls.tab.AddTab(page.Caption());
    const RECT area = m_controls.tab.DisplayArea();
    HWND previous = m_controls.tab.Hwnd();
    for (ConfigPage& page : m_pages) {
        page.CreateOn(Hwnd(), area, previous);
        previous = page.Hwnd();
    }
    m_controls.SetUp();
    m_controls.Scale();
    MakeImageList1(Dpi());
    SelectPage();
}

void frmConfig::OnScaled(int dpi) {
    m_icons.Set(Hwnd(), IDI_CALVANE, dpi);
    m_controls.tab.Scale(dpi);
    const RECT area = m_controls.tab.DisplayArea();
    for (ConfigPage& page : m_pages)
        page.Follow(area, dpi);
    MakeImageList1(dpi);
    m_controls.Scale();
}

// The pictures have margins of their own, which keep them apart from check box and text.
void frmConfig::MakeImageList1(int dpi) {
    const int width = MulDiv(kRowPicture.cx, dpi, kDefaultDpi);
    const int height = MulDiv(kRowPicture.cy, dpi, kDefaultDpi);
    ImageListHandle images(ImageList_Create(width, height, ILC_COLOR32, 0, 1));
    const auto add = [&](int resource) {
        const IconHandle icon = LoadIconOfSize(resource, width, height);
        return ImageList_AddIcon(images.Get(), icon.Get());
    };
    m_controls.banners.lvwBanners.SmallIcons(images.Get(), add(IDI_LIST_BANNER));
    m_controls.search.lvwSearchURLs.SmallIcons(images.Get(), add(IDI_LIST_SEARCH));
    m_imageList1 = std::move(images);
}

void frmConfig::SelectPage() {
    const HWND focus = GetFocus();
    const int selected = m_controls.tab.Selected();
    for (int page = 0; page < static_cast<int>(m_pages.size()); ++page) {
        m_pages[static_cast<size_t>(page)].Show(page == selected);
    }
    // Windows leaves the focus in a control whose page is hidden.
    if (IsOnHiddenPage(focus)) m_controls.tab.SetFocus();
}

void frmConfig::SelectAbout() {
    m_controls.tab.Selected(kAboutPage);
}

void frmConfig::NextPage(int step) {
    const int count = static_cast<int>(m_pages.size());
    const bool fromTab = GetFocus() == m_controls.tab.Hwnd();
    const int next = (m_controls.tab.Selected() + step + count) % count;
    m_controls.tab.Selected(next);
    // Another program may have taken tabs away, and then there is none to select.
    if (fromTab || m_controls.tab.Selected() != next) return;
    const HWND page = m_pages[static_cast<size_t>(next)].Hwnd();
    SendMessageW(Hwnd(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetNextDlgTabItem(page, nullptr, FALSE)),
                 TRUE);
}

bool frmConfig::IsFormMessage(MSG& message) {
    if (Hwnd() == nullptr) return false;
    const bool isOurs = message.hwnd == Hwnd() || IsChild(Hwnd(), message.hwnd);
    if (isOurs && message.message == WM_KEYDOWN && IsDown(VK_CONTROL) && !IsDown(VK_MENU)) {
        switch (message.wParam) {
            case VK_TAB:
                NextPage(IsDown(VK_SHIFT) ? -1 : +1);
                return true;
            case VK_NEXT:
                NextPage(+1);
                return true;
            case VK_PRIOR:
                NextPage(-1);
                return true;
            default:
                break;
        }
    }
    // The dialog manager gives an activated window back the focus that it had, be the control's page hidden
    // by now. It may not look for an accelerator from there: its search would never come back to where it
    // began.
    if (isOurs && IsOnHiddenPage(message.hwnd)) {
        // Messages that another program posts there are not the user's keys.
        if (GetFocus() != message.hwnd) return false;
        if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
        m_controls.tab.SetFocus();
        message.hwnd = m_controls.tab.Hwnd();
    }
    // Fixed captions share letters. Not every system's dialog manager goes on from one button to the other.
    if (isOurs && message.message == WM_SYSCHAR &&
        FocusNextOfAccessKey(Hwnd(), static_cast<wchar_t>(message.wParam))) {
        return true;
    }
    return IsDialogMessageW(Hwnd(), &message) != FALSE;
}

bool frmConfig::IsOnHiddenPage(HWND window) const noexcept {
    for (const ConfigPage& page : m_pages) {
        if (window == page.Hwnd() || IsChild(page.Hwnd(), window)) {
            return (GetWindowLongW(page.Hwnd(), GWL_STYLE) & WS_VISIBLE) == 0;
        }
    }
    return false;
}
