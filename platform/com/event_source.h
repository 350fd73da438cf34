// The event side of an object: its connection point, and raising events to whoever is connected.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include <map>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"

// A member of the object that raises the events. It counts no references of its own: whoever holds the
// container or the connection point holds the owner. The owner returns Container() for
// IConnectionPointContainer.
class EventSource final : private IConnectionPointContainer {
public:
    // owner outlives this object. events: the dispatch interface of the events.
    EventSource(IUnknown& owner, REFIID events);
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    IConnectionPointContainer* Container() noexcept { return this; }

    // Calls every connected client in the order of connection. A client that fails does not keep the event
    // from the others; one that is gone is dropped. arguments: first to last.
    void Raise(DISPID event, std::vector<Variant> arguments = {});

    size_t ConnectionCount() const noexcept { return m_point.sinks.size(); }

private:
    struct Point final : IConnectionPoint {
        Point(EventSource& theSource, REFIID theEvents) : source(theSource), events(theEvents) {}

        STDMETHODIMP QueryInterface(REFIID id, void** object) override;
        STDMETHODIMP_(ULONG) AddRef() override { return source.m_owner.AddRef(); }
        STDMETHODIMP_(ULONG) Release() override { return source.m_owner.Release(); }
        STDMETHODIMP GetConnectionInterface(IID* id) override;
        STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
        STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
        STDMETHODIMP Unadvise(DWORD cookie) override;
        STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

        EventSource& source;
        const IID events;
        std::map<DWORD, ComPtr<IDispatch>> sinks;
        DWORD lastCookie = 0;  // 0 itself never names a connection
    };

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        return m_owner.QueryInterface(id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return m_owner.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return m_owner.Release(); }
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) override;

    IUnknown& m_owner;
    Point m_point;
};
