// The configuration window and its icon in the notification area.
#include "app/frm_config.h"

namespace {

constexpr wchar_t kTrayTip[] = L"Calvane Sentrel";
constexpr LONG kTrayMessage = 1025;  // the number that the tray's hook listens to
constexpr LONG kFrameInterval = 250;
constexpr LONG kPicturesPerCycle = 1;

}  // namespace

void frmConfig::SetUpTray() {
    // A reference of its own: the shell is another process, and the window may be unloaded while it is
    // called.
    ComPtr<ShellNotification> icon;
    ResumeNext([&] { icon = MakeObject<ShellNotification>(); });
    if (icon == nullptr) return;
    m_oShellIcon = icon;
    ResumeNext([&] { m_trayGestures.Connect(Hwnd(), static_cast<IDispatch*>(icon.Get())); });
    icon->InitShellNotify(HandleToLong(Hwnd()), kTrayMessage);
    icon->AddIcon(m_picShellIcon.Get());
    icon->put_ToolTip(Variant(kTrayTip).Value().bstrVal);
}

void frmConfig::LoadTrayPictures() {
    ResumeNext([&] { m_picShellIcon->Load(); });
    for (const ComPtr<PictureBox>& picture : m_picTray)
        ResumeNext([&] { picture->Load(); });
}

void frmConfig::AnimateTray() {
    const ComPtr<ShellNotification> icon = m_oShellIcon;
    if (icon == nullptr) return;
    // The last slot stays empty: the animation never shows it.
    PictureArray pictures(0, static_cast<LONG>(m_picTray.size()));
    for (size_t slot = 0; slot < m_picTray.size(); ++slot) {
        pictures.Item(static_cast<LONG>(slot), m_picTray[slot].Get());
    }
    ThrowIfFailed(
        icon->AnimateIcon(pictures.Reference(), kFrameInterval, kPicturesPerCycle, HandleToLong(Hwnd())));
}

void frmConfig::PopupTrayMenu(bool pauseIsDefault) {
    m_mnuConfig.PopUp(Hwnd(), pauseIsDefault);
}
