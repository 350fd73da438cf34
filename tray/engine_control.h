// The blocking engine: its creation, its events, and the commands of the tray menu.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/callback.h"
#include "platform/com/com_ptr.h"
#include "platform/com/event_connection.h"
#include "platform/generation.h"
#include "platform/timer.h"
#include "sentrel1.h"
#include "tray/engine_leave.h"
#include "tray/tray_menu.h"

// The engine is another process: messages, and with them any member here, may come in while it is called.
// Whoever owns this object keeps it alive through that.
class EngineControl {
public:
    // Listens to menu's first three items. What a closed window does: animate starts the icon's animation,
    // announce gives the notice; either may throw AutomationError. All outlive this object.
    EngineControl(TrayMenu& menu, Event animate, Event announce);
    EngineControl(const EngineControl&) = delete;
    EngineControl& operator=(const EngineControl&) = delete;

    // Creates the engine and puts its state into the menu. Waits for one that is busy, for about ten seconds
    // at most. Every failure is ignored: without an engine the menu stays as it is. configHwnd: the
    // configuration window, which also owns the timer of the commands. formReferenceAddress: the address of a
    // variable that holds a reference to the window's object, valid during the call.
    void Connect(HWND configHwnd, LONG formReferenceAddress);

    // Disconnects the events and lets go of the engine, in this order; the engine is not stopped. What is
    // refused for now, here and in Disconnect, is done again later, when the window may be gone.
    void Release() noexcept;

    // Releases the engine if that is still to be done, and takes leave of the engine's application with the
    // arguments of Connect. Every failure is ignored.
    void Disconnect(HWND configHwnd, LONG formReferenceAddress);

    // Tells the engine to read the store again. Every failure is ignored. done runs behind the engine's
    // reply, before this returns; where the call is refused for now, it is made again for about ten seconds,
    // and done runs behind the last try. It does not run once the engine has been released.
    void ReloadSettings(Event done);

    // Waits likewise. Throws AutomationError when there is no engine (91) or it fails.
    std::wstring LogFile();

    // The engine; null when there is none.
    ComPtr<IDispatch> Popup() const { return m_oPopup; }

    void m_oPopup_Killed(LONG hwnd, const std::wstring& strCaption);
    void m_oPopup_Paused();
    void m_oPopup_Started();
    void m_oPopup_Stopped();

    // A command is only noted here; tmMenu carries it out after the menu has closed.
    void mnuStartKiller_Click();
    void mnuStopKiller_Click();
    void mnuPauseKiller_Click();

    // One command a tick, starting before stopping before pausing. What is left waits for the next command.
    void tmMenu_Timer();

    bool bStartPending = false;
    bool bStopPending = false;
    bool bPausePending = false;

    // Runs only while a command waits.
    const Timer& tmMenu() const noexcept { return m_tmMenu; }

private:
    void ConnectEvents();
    void ReadState();
    void EnableMenuTimer();

    // What the engine is told, and what follows when it has been told or could not be.
    using Member = HRESULT (STDMETHODCALLTYPE _Popup::*)();
    struct Order {
        Member member;
        Event done;
        int triesLeft;
    };
    void Give(Order order);
    void GiveAgain();

    // Returns false when the call is to be made again.
    bool HasGiven(Order& order);

    ComPtr<_Popup> Engine() const;

    TrayMenu& m_menu;
    const Event m_animate;
    const Event m_announce;
    // Begins with each connecting and each release.
    Generation m_connections;
    HWND m_configHwnd = nullptr;
    ComPtr<_SentrelApp> m_application;
    ComPtr<_Popup> m_oPopup;
    std::unique_ptr<EventConnection> m_popupEvents;
    Timer m_tmMenu;
    bool m_bServing = false;
    std::vector<Order> m_refused;
    Timer m_tmAgain;
    EngineLeave m_leave;
};
