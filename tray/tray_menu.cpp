#include "tray/tray_menu.h"

#include "platform/automation_error.h"

namespace {

constexpr wchar_t kCaption[] = L"Config Popup";
constexpr UINT kNoDefaultItem = static_cast<UINT>(-1);

struct Item {
    TrayMenuItem item;
    const wchar_t* caption;  // null for a separator
    Event TrayMenu::*click;
};

constexpr Item kItems[] = {
    {mnuStartKiller, L"&Start Sentrel", &TrayMenu::mnuStartKiller_Click},
    {mnuStopKiller, L"S&top Sentrel", &TrayMenu::mnuStopKiller_Click},
    {mnuSep1, nullptr, nullptr},
    {mnuPauseKiller, L"&Pause Sentrel", &TrayMenu::mnuPauseKiller_Click},
    {mnuSep2, nullptr, nullptr},
    {mnuShowConfig, L"&Open Calvane Configuration", &TrayMenu::mnuShowConfig_Click},
    {mnuExit, L"E&xit Calvane", &TrayMenu::mnuExit_Click},
};

void ThrowIfFalse(BOOL done) {
    if (done == FALSE) throw AutomationError(E_OUTOFMEMORY);
}

}  // namespace

TrayMenu::TrayMenu() : m_bar(CreateMenu()) {
    MenuHandle mnuConfig(CreatePopupMenu());
    for (const Item& row : kItems) {
        const UINT kind = row.caption == nullptr ? MF_SEPARATOR : MF_STRING;
        ThrowIfFalse(AppendMenuW(mnuConfig.Get(), kind, row.item, row.caption));
    }
    ThrowIfFalse(AppendMenuW(m_bar.Get(), MF_POPUP, reinterpret_cast<UINT_PTR>(mnuConfig.Get()), kCaption));
    // It went with the bar.
    mnuConfig.Detach();
}

void TrayMenu::EnableDesignedMenu() noexcept {
    for (const Item& row : kItems)
        Enable(row.item, true);
}

void TrayMenu::EnableRunningMenu() noexcept {
    Enable(mnuStartKiller, false);
    Enable(mnuStopKiller, true);
    Enable(mnuPauseKiller, true);
}

void TrayMenu::EnableStoppedMenu() noexcept {
    Enable(mnuStartKiller, true);
    Enable(mnuStopKiller, false);
    Enable(mnuPauseKiller, false);
}

void TrayMenu::Enable(TrayMenuItem item, bool enabled) noexcept {
    EnableMenuItem(Handle(), item, MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
}

void TrayMenu::PopUp(HWND owner, bool pauseIsDefault) {
    if (m_shown) return;
    SetMenuDefaultItem(Handle(), pauseIsDefault ? mnuPauseKiller : kNoDefaultItem, FALSE);
    POINT cursor{};
    GetCursorPos(&cursor);
    const UINT side = GetSystemMetrics(SM_MENUDROPALIGNMENT) != 0 ? TPM_RIGHTALIGN : TPM_LEFTALIGN;

    m_shown = true;
    const auto chosen = static_cast<UINT>(TrackPopupMenuEx(Handle(), side | TPM_RIGHTBUTTON | TPM_RETURNCMD,
                                                           cursor.x, cursor.y, owner, nullptr));
    m_shown = false;
    // Without a message behind it, the next menu of an icon can close as soon as it opens.
    PostMessageW(owner, WM_NULL, 0, 0);
    RaiseClick(chosen);
}

void TrayMenu::RaiseClick(UINT item) const {
    for (const Item& row : kItems) {
        if (row.item == item && row.click != nullptr) Raise(this->*row.click);
    }
}
