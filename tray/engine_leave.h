// The leave that a window takes of the engine.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/event_connection.h"
#include "platform/timer.h"
#include "sentrel1.h"

// The window may be gone already when a refused leave is taken; the process waits for it. After about ten
// seconds the engine is left without.
class EngineLeave {
public:
    EngineLeave();
    EngineLeave(const EngineLeave&) = delete;
    EngineLeave& operator=(const EngineLeave&) = delete;
    ~EngineLeave();

    // Disconnects the events, then releases the engine object. Either may be null.
    void Release(std::unique_ptr<EventConnection> events, ComPtr<_Popup> popup) noexcept;

    // Tells the engine's application of the leave. Nothing where there is none.
    void Disconnect(ComPtr<_SentrelApp> application, LONG configHwnd, LONG formReferenceAddress) noexcept;

private:
    struct Step {
        std::unique_ptr<EventConnection> events;
        ComPtr<_Popup> popup;
        ComPtr<_SentrelApp> application;
        LONG configHwnd;
        LONG formReferenceAddress;
    };
    void Take(Step step) noexcept;
    static bool IsTaken(Step& step) noexcept;
    void TakeAgain() noexcept;
    void End() noexcept;

    std::vector<Step> m_steps;
    Timer m_tmAgain;
    int m_triesLeft = 0;
    bool m_isWaiting = false;  // holds a lock of the process
};
