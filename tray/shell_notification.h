// The icon in the notification area, and its animation.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "platform/com/dispatch_object.h"
#include "platform/com/event_source.h"
#include "platform/generation.h"
#include "platform/timer.h"
#include "tray/type_libraries.h"
#include "shell_notification_interface.h"
#include "tray/calvane_time.h"
#include "tray/notify_icon_record.h"
#include "tray/picture_array.h"

// The owner calls Class_Terminate when it lets go of the icon: clients may hold the object longer. It
// declares the event MouseUp and never raises it: the icon's mouse messages are TrayWindowProc's.
class ShellNotification final : public DispatchObject<_ShellNotification, kFormsTypeLibrary> {
public:
    ShellNotification();

    // The tip is sent with the next add or change of the icon; setting it changes no icon already shown.
    STDMETHODIMP get_ToolTip(BSTR* value) override;
    STDMETHODIMP put_ToolTip(BSTR value) override;

    // lgHwnd: the window that is told of the mouse over the icon by lgCallBackMsg. It is hooked; a window
    // that cannot be is no error.
    STDMETHODIMP InitShellNotify(LONG lgHwnd, LONG lgCallBackMsg) override;

    // pPic: the picture box with the resting icon. Nothing, not even pPic, changes while an icon is added.
    // Once the shell was asked the icon counts as added; where the shell refused, it is asked again for a
    // while. Fails, and adds nothing, when pPic shows no picture.
    STDMETHODIMP AddIcon(IDispatch* pPic) override;

    STDMETHODIMP RemoveIcon() override;

    // Shows the pictures from number 0 up to, and not including, the upper bound of pPics, one after each
    // lngInterval milliseconds, and one interval later the resting icon, added again. Starts over where an
    // animation runs. hwndOwner: a window of this thread, which the animation does not outlive. A picture
    // that cannot be shown ends the animation.
    STDMETHODIMP AnimateIcon(SAFEARRAY** pPics, LONG lngInterval, LONG lngPicsPerCycle,
                             LONG hwndOwner) override;

    // Removes the icon, the animation and the hook. From then on the object keeps its tip and does nothing.
    void Class_Terminate();

    // The taskbar is new and knows no icons: an icon that is added is added again.
    void OnTaskbarCreated();

    // Throws AutomationError when the next picture cannot be shown, after it has ended the animation.
    void m_tmrAni_TimerFired(LONG lngTHandle);

    bool Animating() const noexcept { return m_bAnimating; }

protected:
    void* FindOtherInterface(REFIID id) override;

private:
    ~ShellNotification() override;

    // Each of the first three, and whatever calls them, lets other work in: pictures may be those of another
    // process.
    static HICON PictureOf(IDispatch* pictureBox);
    void AddPicture(IDispatch* pPic);
    void RefillRecord();
    void FillRecord(HICON icon);
    // Returns whether there is nothing left to ask.
    bool Ask(DWORD action);
    void Add();
    void AddAgain();
    void Remove();

    // Nothing is shown where the tick that asks for it is no longer the newest work.
    void ModifyIcon(IDispatch* pPic, const Generation::Mark& shown);
    void EndAnimation(const Generation::Mark& shown);

    std::wstring m_strToolTip;
    NotifyIconRecord m_record{};
    bool m_bIconAdded = false;
    bool m_bTerminated = false;
    HWND m_lgHwnd = nullptr;
    UINT m_lgCallBackMsg = 0;

    // The resting picture. Its mouse events mean nothing here, so that nobody listens to them.
    ComPtr<IDispatch> m_oPic;

    PictureArray m_frames;
    LONG m_lngPicsPerCycle = 0;
    LONG m_lngFrameCounter = 0;
    bool m_bAnimating = false;
    std::unique_ptr<CalvaneTime> m_tmrAni;

    // Begins with each tick, each start and the end of the animation.
    Generation m_shown;

    Timer m_tmrAdd;
    int m_triesLeft = 0;

    EventSource m_events;
};
