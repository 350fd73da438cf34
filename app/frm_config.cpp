#include "app/frm_config.h"

#include "app/config_globals.h"
#include "app/resource.h"
#include "platform/com/server_process.h"
#include "platform/controls/placement.h"
#include "platform/icon.h"
#include "store/first_run.h"

namespace {

constexpr wchar_t kTrayTip[] = L"Calvane Sentrel";
constexpr LONG kTrayMessage = 1025;  // the number that the tray's hook listens to
constexpr LONG kFrameInterval = 250;
constexpr LONG kPicturesPerCycle = 1;

}  // namespace

frmConfig::frmConfig()
    : DispatchObject(Holder::Server),
      Dialog(IDD_CONFIG),
      m_pages{ConfigPage(IDD_PAGE_SETTINGS, m_controls.All()), ConfigPage(IDD_PAGE_EXCLUDE, m_controls.All()),
              ConfigPage(IDD_PAGE_LOG, m_controls.All()),      ConfigPage(IDD_PAGE_BANNERS, m_controls.All()),
              ConfigPage(IDD_PAGE_SEARCH, m_controls.All()),   ConfigPage(IDD_PAGE_ABOUT, m_controls.All())},
      m_picShellIcon(MakeObject<PictureBox>(L"picShellIcon", IDI_TRAY_REST)),
      m_picTray{MakeObject<PictureBox>(L"picTray", IDI_TRAY_0),
                MakeObject<PictureBox>(L"picTray", IDI_TRAY_1),
                MakeObject<PictureBox>(L"picTray", IDI_TRAY_2)},
      m_changeMark(m_controls.cmdApply),
      m_popupNotice(m_controls.chkPlaySound, m_controls.chkBeep, m_controls.cmdSoundFile,
                    m_controls.cmdTestSound, [this] { m_changeMark.MarkChanged(); }),
      m_generalOptions(m_controls.optStartup, m_controls.optLoadWithKiller, m_controls.optLoadFromMenu,
                       m_controls.cboPauseKey, m_controls.udbSpeed, m_controls.udbPause,
                       m_controls.lblNavSite, m_controls.imgLogo, g_strLoaderPath,
                       [this] { m_changeMark.MarkChanged(); }),
      m_trayGestures(m_mnuConfig, *this, b_OKtoUnload),
      m_engine(
          m_mnuConfig, [this] { AnimateTray(); }, [this] { m_popupNotice.Announce(); }),
      m_excludeList(m_controls.lstExclude, m_controls.cmdAddURL, m_controls.cmdRemoveURL, m_controls.cmdApply,
                    [this] { m_changeMark.MarkChanged(); }),
      m_closedLog(
          m_controls.lstClosedWnd, m_controls.cmdRefreshLog, m_controls.cmdAddTo, m_controls.cmdClearList,
          m_controls.lstExclude, [this] { return m_engine.LogFile(); },
          [this] { m_changeMark.MarkChanged(); }),
      m_bannerSizes(m_controls.lvwBanners, m_controls.cmdAddSize, m_controls.cmdRemoveSize,
                    [this] { m_changeMark.MarkChanged(); }),
      m_searchAddresses(m_controls.lvwSearchURLs, m_controls.cmdAddSearch, m_controls.cmdEditSearch,
                        m_controls.cmdRemoveSearch, [this] { m_changeMark.MarkChanged(); }),
      m_transfer(m_controls.All(), m_changeMark, m_popupNotice, m_generalOptions, m_closedLog,
                 m_controls.cboPauseKey),
      m_commands(
          m_controls.cmdOK, m_controls.cmdApply, m_controls.cmdCancel, m_transfer,
          [this] { m_engine.ReloadSettings(); }, [this] { HideWindow(); }),
      m_taskbarCreated(RegisterWindowMessageW(L"TaskbarCreated")) {
    m_controls.tab.Change = [this] { SelectPage(); };
}

frmConfig::~frmConfig() {
    Unload();
}

void frmConfig::Initialise() {
    m_state = State::Initialising;
    try {
        Create(nullptr);
        // Not while the window itself is being made: no error leaves its procedure.
        MakePages();
    } catch (const std::exception&) {
        Destroy();
        m_state = State::None;
        throw;
    }
    ServerProcess::Lock();
    SetTrayWindow(this);
    // What the engine of the window before it said does not hold for this one.
    m_mnuConfig.EnableDesignedMenu();
    m_engine.Connect(Hwnd(), Reference());
    if (m_state == State::Initialising) SetUpTray();
    if (m_state == State::Initialising) m_state = State::Initialised;
}

LONG frmConfig::Handle() {
    if (m_state == State::None) Initialise();
    if (m_state == State::Initialised) Load();
    return HandleToLong(Hwnd());
}

void frmConfig::Load() {
    m_state = State::Loading;
    b_OKtoUnload = false;
    m_engine.bStartPending = false;
    m_engine.bStopPending = false;
    try {
        WriteFirstRunDefaults();
        SetupBannerColumns(m_controls.lvwBanners);
        SetupSearchColumns(m_controls.lvwSearchURLs);
        m_transfer.LoadSettings();
    } catch (const std::exception&) {
        // Who reads the handle next loads anew.
        if (m_state == State::Loading) m_state = State::Initialised;
        throw;
    }
    // The engine's answer about its log lets other messages in: the window may be gone again.
    if (m_state != State::Loading) return;
    m_state = State::Loaded;
    // The first time Config stores the handle; a window made anew has a new one.
    if (g_lngConfigHwnd != 0) g_lngConfigHwnd = HandleToLong(Hwnd());
    if (std::exchange(m_showWhenLoaded, false)) ShowModeless();
}

void frmConfig::ShowModeless() {
    if (m_state == State::Initialising || m_state == State::Loading) {
        m_showWhenLoaded = true;
        return;
    }
    Handle();
    MoveOntoMonitor(Hwnd());
    ShowWindow(Hwnd(), IsIconic(Hwnd()) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Hwnd());
}

void frmConfig::HideWindow() noexcept {
    m_showWhenLoaded = false;
    ShowWindow(Hwnd(), SW_HIDE);
}

bool frmConfig::QueryUnload() const noexcept {
    return b_OKtoUnload;
}

void frmConfig::Unload() {
    if (m_state == State::None || m_state == State::Unloading) return;
    m_state = State::Unloading;
    m_engine.Release();
    m_trayGestures.Disconnect();
    if (m_oShellIcon != nullptr) m_oShellIcon->Class_Terminate();
    m_oShellIcon.Reset();
    m_engine.Disconnect(Hwnd(), Reference());
    Destroy();
    // The loop of a dialog that went with its owner may drop the message with which it finds that out; it
    // must not be a client's call.
    PostMessageW(nullptr, WM_NULL, 0, 0);
    SetTrayWindow(nullptr);
    m_state = State::None;
    ServerProcess::Unlock();
}

// The engine gets the address of a variable that holds a reference to the window.
LONG frmConfig::Reference() noexcept {
    return PtrToLong(&m_reference);
}

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

bool frmConfig::OnInit() {
    SetWindowIcons(Hwnd(), IDI_CALVANE);
    return true;
}

bool frmConfig::OnMessage(UINT message, WPARAM wParam, LPARAM, LRESULT& result) {
    switch (message) {
        case WM_CLOSE:
            if (QueryUnload()) {
                Unload();
            } else {
                HideWindow();
            }
            return true;

        case WM_QUERYENDSESSION:
            result = TRUE;
            return true;

        case WM_ENDSESSION:
            if (wParam != FALSE) Unload();
            return true;

        default:
            if (message != m_taskbarCreated || m_oShellIcon == nullptr) return false;
            m_oShellIcon->OnTaskbarCreated();
            return true;
    }
}
