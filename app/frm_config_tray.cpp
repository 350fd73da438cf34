// The configuration window and its icon in the notification area.
#include "app/frm_config.h"

namespace {

constexpr wchar_t kTrayTip[] = L"Calvane Sentrel";
constexpr LONG kTrayMessage = 1025;  // the number that the tray's hook listens to
constexpr LONG kFrameInterval = 250;
constexpr LONG kPicturesPerCycle = 1;

}  // namespace

void frmConfig::SetUpTray() {
    ResumeNext([&] { m_oShellIcon = MakeObject<ShellNotification>(); });
    if (m_oShellIcon == nullptr) return;
    ResumeNext([&] { m_trayGestures.Connect(Hwnd(), static_cast<IDispatch*>(m_oShellIcon.Get())); });
    m_oShellIcon->InitShellNotify(HandleToLong(Hwnd()), kTrayMessage);
    m_oShellIcon->AddIcon(m_picShellIcon.Get());
    m_oShellIcon->put_ToolTip(Variant(kTrayTip).Value().bstrVal);
}

void frmConfig::AnimateTray() {
    if (m_oShellIcon == nullptr) return;
    // The last slot stays empty: the animation never shows it.
    PictureArray pictures(0, static_cast<LONG>(m_picTray.size()));
    for (size_t slot = 0; slot < m_picTray.size(); ++slot) {
        pictures.Item(static_cast<LONG>(slot), m_picTray[slot].Get());
    }
    ThrowIfFailed(m_oShellIcon->AnimateIcon(pictures.Reference(), kFrameInterval, kPicturesPerCycle,
                                            HandleToLong(Hwnd())));
}

void frmConfig::PopupTrayMenu(bool pauseIsDefault) {
    m_mnuConfig.PopUp(Hwnd(), pauseIsDefault);
}
