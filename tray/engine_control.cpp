#include "tray/engine_control.h"

#include <objbase.h>

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/bstr.h"
#include "platform/com/variant.h"
#include "tray/patient_calls.h"

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
    : m_menu(menu),
      m_animate(std::move(animate)),
      m_announce(std::move(announce)),
      m_tmMenu(kMenuInterval),
      m_tmAgain(kAgainInterval) {
    m_menu.mnuStartKiller_Click = [this] { mnuStartKiller_Click(); };
    m_menu.mnuStopKiller_Click = [this] { mnuStopKiller_Click(); };
    m_menu.mnuPauseKiller_Click = [this] { mnuPauseKiller_Click(); };
    m_tmMenu.Tick = [this] { tmMenu_Timer(); };
    m_tmAgain.Tick = [this] { GiveAgain(); };
}

// The window may be unloaded, and take leave of the engine, during any of these calls: what comes of the call
// is let go of again then.
void EngineControl::Connect(HWND configHwnd, LONG formReferenceAddress) {
    const Generation::Mark connection = m_connections.Begin();
    m_configHwnd = configHwnd;
    PatientCalls calls(connection);
    ComPtr<_SentrelApp> application;
    ResumeNext([&] {
        calls.Make([&] {
            ThrowIfFailed(CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER,
                                           IID_PPV_ARGS(&application)));
        });
    });
    if (!connection.IsCurrent()) return;
    m_application = application;
    ComPtr<_Popup> popup;
    ResumeNext([&] {
        if (!application) RaiseError(ErrorNumber::ObjectNotSet);
        calls.Make([&] {
            LONG mode = kManagerMode;
            ThrowIfFailed(
                application->CreatePopup(HandleToLong(configHwnd), formReferenceAddress, &mode, &popup));
        });
    });
    if (!connection.IsCurrent()) return;
    m_oPopup = popup;
    ResumeNext([&] { calls.Make([&] { ConnectEvents(); }); });
    if (!connection.IsCurrent()) return;
    ResumeNext([&] { calls.Make([&] { ReadState(); }); });
}

void EngineControl::ConnectEvents() {
    const Generation::Mark connection = m_connections.Current();
    EventHandlers handlers;
    handlers[kKilled] = [this](const DISPPARAMS& arguments) {
        if (arguments.cArgs != 2) RaiseError(ErrorNumber::InvalidProcedureCall);
        m_oPopup_Killed(ToLong(arguments.rgvarg[1]), ToText(arguments.rgvarg[0]));
    };
    handlers[kPausedEvent] = [this](const DISPPARAMS&) { m_oPopup_Paused(); };
    handlers[kStartedEvent] = [this](const DISPPARAMS&) { m_oPopup_Started(); };
    handlers[kStoppedEvent] = [this](const DISPPARAMS&) { m_oPopup_Stopped(); };
    auto popupEvents =
        std::make_unique<EventConnection>(Engine().Get(), __uuidof(__Popup), std::move(handlers));
    if (!connection.IsCurrent()) return m_leave.Release(std::move(popupEvents), nullptr);
    m_popupEvents = std::move(popupEvents);
}

void EngineControl::ReadState() {
    const Generation::Mark connection = m_connections.Current();
    LONG state = 0;
    ThrowIfFailed(Engine()->get_State(&state));
    if (!connection.IsCurrent()) return;
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
    m_connections.Begin();
    m_tmMenu.Stop();
    m_bServing = false;
    m_tmAgain.Stop();
    m_refused.clear();
    m_leave.Release(std::move(m_popupEvents), std::move(m_oPopup));
}

void EngineControl::Disconnect(HWND configHwnd, LONG formReferenceAddress) {
    Release();
    m_configHwnd = nullptr;
    // An engine that could not be reached before is not started to be left.
    m_leave.Disconnect(std::move(m_application), HandleToLong(configHwnd), formReferenceAddress);
}

void EngineControl::ReloadSettings(Event done) {
    Give({&_Popup::ReloadSettings, std::move(done), kTriesAgain});
}

// What was refused earlier goes first.
void EngineControl::Give(Order order) {
    if (m_refused.empty() && HasGiven(order)) return;
    if (!ResumeNext([&] { m_refused.push_back(order); })) return order.done();
    if (!m_tmAgain.Running()) m_tmAgain.Start(m_configHwnd);
}

void EngineControl::GiveAgain() {
    m_tmAgain.Stop();
    while (!m_refused.empty()) {
        // Taken out while the engine is called: what comes in meanwhile must not give it too.
        Order order = std::move(m_refused.front());
        m_refused.erase(m_refused.begin());
        if (HasGiven(order)) continue;
        m_refused.insert(m_refused.begin(), std::move(order));
        m_tmAgain.Start(m_configHwnd);
        return;
    }
}

bool EngineControl::HasGiven(Order& order) {
    const Generation::Mark connection = m_connections.Current();
    HRESULT result = E_FAIL;
    ResumeNext([&] { result = (Engine().Get()->*order.member)(); });
    const bool isReleased = !connection.IsCurrent();
    if (!isReleased && IsRefusedForNow(result) && order.triesLeft-- > 0) return false;
    if (!isReleased) order.done();
    return true;
}

std::wstring EngineControl::LogFile() {
    BstrHandle path;
    PatientCalls(m_connections.Current()).Make([&] { ThrowIfFailed(Engine()->get_LogFile(path.Put())); });
    return std::wstring(ViewOf(path.Get()));
}

// A reference of the caller's own: the engine may be released while it is called.
ComPtr<_Popup> EngineControl::Engine() const {
    if (!m_oPopup) RaiseError(ErrorNumber::ObjectNotSet);
    return m_oPopup;
}

void EngineControl::m_oPopup_Killed(LONG, const std::wstring&) {
    ResumeNext([&] { Raise(m_animate); });
    ResumeNext([&] { Raise(m_announce); });
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
    const Generation::Mark connection = m_connections.Current();
    if (bStartPending) {
        Give({&_Popup::Start, [this] { m_menu.EnableRunningMenu(); }, kTriesAgain});
        bStartPending = false;
    } else if (bStopPending) {
        Give({&_Popup::Stop, [this] { m_menu.EnableStoppedMenu(); }, kTriesAgain});
        bStopPending = false;
    } else if (bPausePending) {
        Give({&_Popup::Pause, [] {}, kTriesAgain});
        bPausePending = false;
    }
    if (!connection.IsCurrent()) return;
    m_bServing = false;
    m_tmMenu.Stop();
}
