// What every object of the engine's process shares: its state, its log and its clients.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/com/variant.h"
#include "standin/engine/call_record.h"

class PopupObject;

// The values of State.
inline constexpr long kRunning = 1;
inline constexpr long kStopped = 2;
inline constexpr long kPaused = 3;

class Engine {
public:
    Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    CallRecord calls;
    std::wstring logFile;
    std::wstring watchValue;
    bool raiseByItself = true;

    // Called when State has changed.
    std::function<void()> Changed;

    long State() const noexcept { return m_state; }
    void State(long state);

    // As at first, but for the clients.
    void Reset();

    // Change the state, and raise the event of it if the engine raises by itself.
    void Start();
    void Stop();
    void Pause();

    void ReloadSettings();

    // Each raises its event to every connected client.
    void RaiseKilled(long hwnd, const std::wstring& caption);
    void RaisePaused();
    void RaiseStarted();
    void RaiseStopped();

    // Appends the address to the log, in the ANSI code page, and raises Killed. Throws AutomationError when
    // the log cannot be written; no event is raised then.
    void ClosePopup(long hwnd, const std::wstring& address);

    // The engine objects that exist enter and leave by themselves.
    void Enter(PopupObject* popup) { m_popups.push_back(popup); }
    void Leave(PopupObject* popup) noexcept { std::erase(m_popups, popup); }
    size_t PopupCount() const noexcept { return m_popups.size(); }
    size_t ConnectionCount() const;

private:
    void Raise(DISPID event, const std::vector<Variant>& arguments = {});

    long m_state = kRunning;
    std::vector<PopupObject*> m_popups;
};
