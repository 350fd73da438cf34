// A connection to another object's events: source, cookie and sink in one.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include <functional>
#include <map>

#include "platform/com/com_ptr.h"

// What to do at each event, by its DISPID. The arguments are the event's own, last to first; they are only
// valid during the call.
using EventHandlers = std::map<DISPID, std::function<void(const DISPPARAMS&)>>;

class EventConnection {
public:
    // source: the object that raises the events; events: their dispatch interface. Events arrive on the
    // calling thread, through its message queue. Throws AutomationError when source cannot be connected to.
    EventConnection(IUnknown* source, REFIID events, EventHandlers handlers);
    EventConnection(const EventConnection&) = delete;
    EventConnection& operator=(const EventConnection&) = delete;

    // Disconnects. A source that is gone is no error.
    ~EventConnection();

    // From here on no handler runs, even where the source does not let go of the sink. Returns what the
    // source says to that; a call that it refuses can be made again.
    HRESULT Disconnect() noexcept;

private:
    class Sink;

    ComPtr<Sink> m_sink;
    ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
    bool m_isConnected = false;
};
