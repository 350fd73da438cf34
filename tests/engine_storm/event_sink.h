// The manager's own listener to the engine's events, called without the engine: a stand-in that is slow with
// a call raises nothing meanwhile, an engine with several threads does.
#pragma once

#include <windows.h>

#include "platform/com/com_ptr.h"

class EventSink {
public:
    // form: the window's object, connected to the engine. Throws AutomationError when it is not.
    explicit EventSink(IDispatch* form);

    // Each returns what the manager returned, and notes how long that took.
    HRESULT Killed();
    HRESULT Started() { return Raise(3); }
    HRESULT Stopped() { return Raise(4); }

    long Raised() const noexcept { return m_raised; }
    DWORD Longest() const noexcept { return m_longest; }

private:
    HRESULT Raise(DISPID event, DISPPARAMS arguments = {});

    ComPtr<IDispatch> m_sink;
    long m_raised = 0;
    DWORD m_longest = 0;
};
