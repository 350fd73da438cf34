#include "tray/shell_notification.h"

#include <shellapi.h>

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/bstr.h"
#include "platform/com/com_method.h"
#include "tray/picture_box.h"
#include "tray/bas_shell_notify.h"

namespace {

// A shell that is busy, as at logon, refuses icons or replies too late.
constexpr UINT kAddInterval = 2000;
constexpr int kAddTries = 15;

}  // namespace

ShellNotification::ShellNotification()
    : DispatchObject(Holder::Server),
      m_tmrAdd(kAddInterval),
      m_events(*static_cast<_ShellNotification*>(this), __uuidof(__ShellNotification)) {
    m_tmrAdd.Tick = [this] { AddAgain(); };
}

ShellNotification::~ShellNotification() {
    Class_Terminate();
}

void* ShellNotification::FindOtherInterface(REFIID id) {
    return IsEqualIID(id, IID_IConnectionPointContainer) ? m_events.Container() : nullptr;
}

STDMETHODIMP ShellNotification::get_ToolTip(BSTR* value) {
    return ReturnText(m_strToolTip, value);
}

STDMETHODIMP ShellNotification::put_ToolTip(BSTR value) {
    return ComMethod([&] { m_strToolTip = ViewOf(value); });
}

STDMETHODIMP ShellNotification::InitShellNotify(LONG lgHwnd, LONG lgCallBackMsg) {
    return ComMethod([&] {
        if (m_bTerminated) return;
        m_lgHwnd = static_cast<HWND>(LongToHandle(lgHwnd));
        m_lgCallBackMsg = static_cast<UINT>(lgCallBackMsg);
        HookTrayWindow(m_lgHwnd);
    });
}

STDMETHODIMP ShellNotification::AddIcon(IDispatch* pPic) {
    return ComMethod([&] { AddPicture(pPic); });
}

void ShellNotification::AddPicture(IDispatch* pPic) {
    if (m_bTerminated || m_bIconAdded) return;
    m_oPic = pPic;
    const HICON icon = PictureOf(pPic);
    if (m_bTerminated || m_bIconAdded || m_oPic.Get() != pPic) return;
    FillRecord(icon);
    m_bIconAdded = true;
    Add();
}

STDMETHODIMP ShellNotification::RemoveIcon() {
    return ComMethod([&] { Remove(); });
}

void ShellNotification::Remove() {
    m_tmrAdd.Stop();
    // The shell may let a message in meanwhile that tells of a new taskbar: the icon must not come back.
    if (std::exchange(m_bIconAdded, false)) NotifyShell(NIM_DELETE, m_record);
}

STDMETHODIMP ShellNotification::AnimateIcon(SAFEARRAY** pPics, LONG lngInterval, LONG lngPicsPerCycle,
                                            LONG hwndOwner) {
    if (pPics == nullptr) return E_POINTER;
    return ComMethod([&] {
        if (m_bTerminated) return;
        // Pictures that cannot be had leave a running animation as it is.
        PictureArray frames(*pPics);
        m_shown.Begin();
        m_tmrAni = std::make_unique<CalvaneTime>();
        m_tmrAni->TimerFired = [this](LONG lngTHandle) { m_tmrAni_TimerFired(lngTHandle); };
        m_tmrAni->Interval(lngInterval);
        m_lngPicsPerCycle = lngPicsPerCycle;
        m_lngFrameCounter = 0;
        m_frames = std::move(frames);
        m_bAnimating = true;
        m_tmrAni->Start(static_cast<HWND>(LongToHandle(hwndOwner)));
    });
}

// The picture with the number of the upper bound is never shown: its place is the resting icon's.
void ShellNotification::m_tmrAni_TimerFired(LONG) {
    const ComPtr<IUnknown> self(static_cast<_ShellNotification*>(this));
    const Generation::Mark shown = m_shown.Begin();
    if (m_lngFrameCounter == m_frames.UpperBound()) {
        EndAnimation(shown);
        return;
    }
    // Counted before the picture is asked for: a picture of another process may take longer than a period.
    const LONG frame = m_lngFrameCounter++;
    try {
        ModifyIcon(m_frames.Item(frame).Get(), shown);
    } catch (const AutomationError&) {
        // The same picture would fail again at every tick.
        if (shown.IsCurrent()) EndAnimation(shown);
        throw;
    }
}

void ShellNotification::EndAnimation(const Generation::Mark& shown) {
    if (m_tmrAni) m_tmrAni->Stop();
    m_bAnimating = false;
    m_lngPicsPerCycle = 0;
    m_frames.Clear();
    if (!shown.IsCurrent()) return;
    Remove();
    AddPicture(m_oPic.Get());
}

// The call of a picture box in another process may let in the call that lets go of it.
HICON ShellNotification::PictureOf(IDispatch* pictureBox) {
    const ComPtr<IDispatch> held(pictureBox);
    return IconOf(pictureBox);
}

void ShellNotification::FillRecord(HICON icon) {
    m_record = MakeNotifyIconRecord(m_lgHwnd, m_lgCallBackMsg, icon, m_strToolTip);
}

// The icon stays as the record has it where the picture cannot be had.
void ShellNotification::RefillRecord() {
    ResumeNext([&] {
        const HICON icon = PictureOf(m_oPic.Get());
        if (m_bIconAdded) FillRecord(icon);
    });
}

// The icon may be removed while the shell is asked, before the shell has it.
bool ShellNotification::Ask(DWORD action) {
    const bool taken = NotifyShell(action, m_record);
    if (taken && !m_bIconAdded) NotifyShell(NIM_DELETE, m_record);
    return taken || !m_bIconAdded;
}

void ShellNotification::Add() {
    if (Ask(NIM_ADD)) return;
    m_triesLeft = kAddTries;
    m_tmrAdd.Start(m_lgHwnd);
}

// An icon that the shell took after it had given up waiting can be changed, but not added once more.
void ShellNotification::AddAgain() {
    const ComPtr<IUnknown> self(static_cast<_ShellNotification*>(this));
    if (--m_triesLeft <= 0) m_tmrAdd.Stop();
    RefillRecord();
    if (!m_bIconAdded) return;
    if (Ask(NIM_MODIFY) || Ask(NIM_ADD)) m_tmrAdd.Stop();
}

void ShellNotification::OnTaskbarCreated() {
    if (!m_bIconAdded) return;
    m_tmrAdd.Stop();
    RefillRecord();
    if (m_bIconAdded) Add();
}

void ShellNotification::ModifyIcon(IDispatch* pPic, const Generation::Mark& shown) {
    if (!m_bIconAdded) return;
    const HICON icon = PictureOf(pPic);
    if (!m_bIconAdded || !shown.IsCurrent()) return;
    FillRecord(icon);
    NotifyShell(NIM_MODIFY, m_record);
}

void ShellNotification::Class_Terminate() {
    if (std::exchange(m_bTerminated, true)) return;
    m_shown.Begin();
    Remove();
    // A finished animation leaves its timer behind, and a client may have asked for 0 pictures per cycle.
    if (m_lngPicsPerCycle > 0) m_tmrAni->Stop();
    m_tmrAni.reset();
    m_bAnimating = false;
    m_frames.Clear();
    m_oPic.Reset();
    UnhookTrayWindow(m_lgHwnd);
}
