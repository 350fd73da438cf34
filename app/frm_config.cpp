#include "app/frm_config.h"

#include <utility>

#include "app/config_globals.h"
#include "app/resource.h"
#include "platform/com/server_process.h"
#include "platform/controls/placement.h"
#include "store/first_run.h"

frmConfig::frmConfig()
    : DispatchObject(Holder::Server),
      Dialog(IDD_CONFIG),
      m_pages{ConfigPage(L"Settings", IDD_PAGE_SETTINGS, m_controls.settings.all),
              ConfigPage(L"Exclude", IDD_PAGE_EXCLUDE, m_controls.exclude.all),
              ConfigPage(L"Log", IDD_PAGE_LOG, m_controls.log.all),
              ConfigPage(L"Banners", IDD_PAGE_BANNERS, m_controls.banners.all),
              ConfigPage(L"Search", IDD_PAGE_SEARCH, m_controls.search.all),
              ConfigPage(L"About", IDD_PAGE_ABOUT, m_controls.about.all)},
      m_picShellIcon(MakeObject<PictureBox>(L"picShellIcon", IDI_TRAY_REST)),
      m_picTray{MakeObject<PictureBox>(L"picTray", IDI_TRAY_0),
                MakeObject<PictureBox>(L"picTray", IDI_TRAY_1),
                MakeObject<PictureBox>(L"picTray", IDI_TRAY_2)},
      m_changeMark(m_controls.commands.cmdApply),
      m_popupNotice(m_controls.settings, m_markChanged),
      m_generalOptions(m_controls.settings, g_strLoaderPath, m_markChanged),
      m_aboutPage(m_controls.about),
      m_trayGestures(m_mnuConfig, *this, b_OKtoUnload),
      m_engine(
          m_mnuConfig, [this] { AnimateTray(); }, [this] { m_popupNotice.Announce(); }),
      m_excludeList(
          m_controls.exclude, [this] { m_changeMark.EnableApply(); }, m_markChanged),
      m_closedLog(
          m_controls.log, m_controls.exclude.lstExclude, [this] { return m_engine.LogFile(); },
          m_markChanged),
      m_bannerSizes(m_controls.banners, m_markChanged),
      m_searchAddresses(m_controls.search, m_markChanged),
      m_transfer(m_controls.All(), m_changeMark, m_popupNotice, m_generalOptions, m_closedLog,
                 m_controls.settings.cboPauseKey),
      m_commands(
          m_controls.commands, m_changeMark, m_transfer,
          [this](Event done) { m_engine.ReloadSettings(std::move(done)); }, [this] { HideWindow(); }),
      m_taskbarCreated(RegisterWindowMessageW(L"TaskbarCreated")) {
    m_controls.tab.Change = [this] { SelectPage(); };
}

frmConfig::~frmConfig() {
    TakeDown();
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
    // The items still show the state of the engine that an earlier window was connected to.
    m_mnuConfig.EnableDesignedMenu();
    m_engine.Connect(Hwnd(), Reference());
    if (m_state == State::Initialising) SetUpTray();
    if (m_state == State::Initialising) m_state = State::Initialised;
}

LONG frmConfig::Handle() {
    if (ServerProcess::Stopping()) throw AutomationError(CO_E_SERVER_STOPPING);
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
        SetupBannerColumns(m_controls.banners.lvwBanners);
        SetupSearchColumns(m_controls.search.lvwSearchURLs);
        m_transfer.LoadSettings();
    } catch (const std::exception&) {
        // The next reading of the handle loads the window again.
        if (m_state == State::Loading) m_state = State::Initialised;
        throw;
    }
    // Asking the engine for its log lets other messages in: the window may be gone again.
    if (m_state != State::Loading) return;
    m_state = State::Loaded;
    g_lngConfigHwnd = HandleToLong(Hwnd());
    ShowIfAsked();
}

bool frmConfig::IsChanging() const noexcept {
    return m_state == State::Initialising || m_state == State::Loading || m_state == State::Unloading;
}

void frmConfig::ShowIfAsked() {
    Raise(std::exchange(m_showLater, nullptr));
}

void frmConfig::ShowModeless() {
    if (IsChanging()) {
        if (!m_showLater) m_showLater = [this] { ShowModeless(); };
        return;
    }
    Handle();
    MoveOntoMonitor(Hwnd());
    // A dialog of the window keeps the keyboard: the window that it disables must not be activated.
    const HWND popup = GetLastActivePopup(Hwnd());
    const bool hasDialog = popup != nullptr && popup != Hwnd() && !IsWindowEnabled(Hwnd());
    ShowWindow(Hwnd(), IsIconic(Hwnd()) ? SW_RESTORE : hasDialog ? SW_SHOWNA : SW_SHOW);
    SetForegroundWindow(hasDialog ? popup : Hwnd());
}

void frmConfig::ShowAbout() {
    if (IsChanging()) {
        m_showLater = [this] { ShowAbout(); };
        return;
    }
    ShowModeless();
    SelectAbout();
}

void frmConfig::HideWindow() noexcept {
    m_showLater = nullptr;
    ShowWindow(Hwnd(), SW_HIDE);
}

bool frmConfig::QueryUnload() const noexcept {
    return b_OKtoUnload;
}

// Whoever asks for the window while the engine takes its leave gets one, made when the old one is gone.
void frmConfig::Unload() {
    if (m_state == State::None || m_state == State::Unloading) return;
    m_showLater = nullptr;
    TakeDown();
    if (!ServerProcess::Stopping()) ResumeNext([&] { ShowIfAsked(); });
}

void frmConfig::TakeDown() {
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

bool frmConfig::OnInit() {
    m_icons.Set(Hwnd(), IDI_CALVANE, Dpi());
    CentreOnMonitor(Hwnd());
    // Explorer has fewer rights than an elevated manager, to which Windows would not deliver what it sends.
    ChangeWindowMessageFilterEx(Hwnd(), m_taskbarCreated, MSGFLT_ALLOW, nullptr);
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
            // A taskbar that has another resolution now says so by this message, too.
            LoadTrayPictures();
            ComPtr<ShellNotification>(m_oShellIcon)->OnTaskbarCreated();
            return true;
    }
}
