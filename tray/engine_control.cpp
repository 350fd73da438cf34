#include "tray/engine_control.h"

#include <objbase.h>

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/bstr.h"
#include "platform/com/variant.h"

namespace {

constexpr UINT kMenuInterval = 500;
constexpr LONG kManagerMode = 2;

enum EngineState : LONG {
    kRunning = 1,
    kStopped = 2,
    kPaused = 3,
};

enum PopupEvent : DISPID {
    kKilled = 1,
    kPausedEvent = 2,
    kStartedEvent = 3,
    kStoppedEvent = 4,
};

}  // namespace

EngineControl::EngineControl(TrayMenu& menu, Event animate, Event announce)
    : m_menu(menu), m_animate(std::move(animate)), m_announce(std::move(announce)), m_tmMenu(kMenuInterval) {
    m_menu.mnuStartKiller_Click = [this] { mnuStartKiller_Click(); };
    m_menu.mnuStopKiller_Click = [this] { mnuStopKiller_Click(); };
    m_menu.mnuPauseKiller_Click = [this] { mnuPauseKiller_Click(); };
    m_tmMenu.Tick = [this] { tmMenu_Timer(); };
}

void EngineControl::Connect(HWND configHwnd, LONG formReferenceAddress) {
    m_configHwnd = configHwnd;
    ResumeNext([&] {
        ThrowIfFailed(CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER,
                                       IID_PPV_ARGS(&m_application)));
    });
    ResumeNext([&] {
        // A reference of its own: the window may be unloaded, and take leave, while the engine is called.
        const ComPtr<_SentrelApp> application = m_application;
        if (!application) RaiseError(ErrorNumber::ObjectNotSet);
        LONG mode = kManagerMode;
        ComPtr<_Popup> popup;
        ThrowIfFailed(
            application->CreatePopup(HandleToLong(configHwnd), formReferenceAddress, &mode, &popup));
        if (m_configHwnd != nullptr) m_oPopup = popup;
    });
    ResumeNext([&] { ConnectEvents(); });
    ResumeNext([&] { ReadState(); });
}

void EngineControl::ConnectEvents() {
    EventHandlers handlers;
    handlers[kKilled] = [this](const DISPPARAMS& arguments) {
        if (arguments.cArgs != 2) RaiseError(ErrorNumber::InvalidProcedureCall);
        m_oPopup_Killed(ToLong(arguments.rgvarg[1]), ToText(arguments.rgvarg[0]));
    };
    handlers[kPausedEvent] = [this](const DISPPARAMS&) { m_oPopup_Paused(); };
    handlers[kStartedEvent] = [this](const DISPPARAMS&) { m_oPopup_Started(); };
    handlers[kStoppedEvent] = [this](const DISPPARAMS&) { m_oPopup_Stopped(); };
    m_popupEvents = std::make_unique<EventConnection>(Engine().Get(), __uuidof(__Popup), std::move(handlers));
}

void EngineControl::ReadState() {
    LONG state = 0;
    ThrowIfFailed(Engine()->get_State(&state));
    switch (state) {
        case kRunning:
            m_menu.EnableRunningMenu();
            break;
        case kStopped:
        case kPaused:
            m_menu.EnableStoppedMenu();
            break;
        default:
            break;
    }
}

// The members are empty before the engine hears of it: what comes in meanwhile finds no engine.
void EngineControl::Release() noexcept {
    m_tmMenu.Stop();
    auto popupEvents = std::move(m_popupEvents);
    const auto popup = std::move(m_oPopup);
    popupEvents.reset();
}

void EngineControl::Disconnect(HWND configHwnd, LONG formReferenceAddress) {
    Release();
    m_configHwnd = nullptr;
    const auto application = std::move(m_application);
    // An engine that could not be reached before is not started for a farewell.
    if (application) application->ReleasePopup(HandleToLong(configHwnd), formReferenceAddress);
}

void EngineControl::ReloadSettings() {
    ThrowIfFailed(Engine()->ReloadSettings());
}

std::wstring EngineControl::LogFile() {
    BstrHandle path;
    ThrowIfFailed(Engine()->get_LogFile(path.Put()));
    return std::wstring(ViewOf(path.Get()));
}

// A reference of the caller's own: the engine may be released while it is called.
ComPtr<_Popup> EngineControl::Engine() const {
    if (!m_oPopup) RaiseError(ErrorNumber::ObjectNotSet);
    return m_oPopup;
}

void EngineControl::m_oPopup_Killed(LONG, const std::wstring&) {
    ResumeNext([&] {
        if (m_animate) m_animate();
    });
    ResumeNext([&] {
        if (m_announce) m_announce();
    });
}

void EngineControl::m_oPopup_Paused() {
    m_menu.EnableStoppedMenu();
}

void EngineControl::m_oPopup_Started() {
    m_menu.EnableRunningMenu();
}

void EngineControl::m_oPopup_Stopped() {
    m_menu.EnableStoppedMenu();
}

void EngineControl::mnuStartKiller_Click() {
    bStartPending = true;
    EnableMenuTimer();
}

void EngineControl::mnuStopKiller_Click() {
    bStopPending = true;
    EnableMenuTimer();
}

void EngineControl::mnuPauseKiller_Click() {
    bPausePending = true;
    EnableMenuTimer();
}

// A command that follows another before its tick waits for that same tick.
void EngineControl::EnableMenuTimer() {
    if (!m_tmMenu.Running()) m_tmMenu.Start(m_configHwnd);
}

// An engine that takes longer than a period lets the next tick in: the command is not given twice.
void EngineControl::tmMenu_Timer() {
    if (std::exchange(m_bServing, true)) return;
    ServeCommand();
    m_bServing = false;
    m_tmMenu.Stop();
}

void EngineControl::ServeCommand() {
    if (bStartPending) {
        ResumeNext([&] { ThrowIfFailed(Engine()->Start()); });
        bStartPending = false;
        m_menu.EnableRunningMenu();
    } else if (bStopPending) {
        ResumeNext([&] { ThrowIfFailed(Engine()->Stop()); });
        bStopPending = false;
        m_menu.EnableStoppedMenu();
    } else if (bPausePending) {
        ResumeNext([&] { ThrowIfFailed(Engine()->Pause()); });
        bPausePending = false;
    }
}
