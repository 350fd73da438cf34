#include "platform/com/event_source.h"

#include <olectl.h>

#include <algorithm>

#include "platform/com/com_enumerator.h"
#include "platform/com/com_method.h"

namespace {

struct HeldConnection {
    ComPtr<IDispatch> sink;
    DWORD cookie;
};

CONNECTDATA CopyConnection(const HeldConnection& held) {
    held.sink->AddRef();
    return {held.sink.Get(), held.cookie};
}

IConnectionPoint* CopyPoint(const ComPtr<IConnectionPoint>& held) {
    held->AddRef();
    return held.Get();
}

using ConnectionEnumerator = ComEnumerator<IEnumConnections, HeldConnection, CONNECTDATA, CopyConnection>;
using PointEnumerator =
    ComEnumerator<IEnumConnectionPoints, ComPtr<IConnectionPoint>, IConnectionPoint*, CopyPoint>;

bool IsGone(HRESULT result) {
    return result == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) ||
           result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED) || result == RPC_E_DISCONNECTED ||
           result == RPC_E_SERVER_DIED || result == CO_E_OBJNOTCONNECTED;
}

}  // namespace

EventSource::EventSource(IUnknown& owner, REFIID events) : m_owner(owner), m_point(*this, events) {}

void EventSource::Raise(DISPID event, std::vector<Variant> arguments) {
    // DISPPARAMS holds the arguments last to first.
    std::reverse(arguments.begin(), arguments.end());
    std::vector<VARIANT> values;
    values.reserve(arguments.size());
    for (const Variant& argument : arguments)
        values.push_back(argument.Value());
    DISPPARAMS parameters{values.data(), nullptr, static_cast<UINT>(values.size()), 0};

    // A client may connect or disconnect while it is called.
    const auto sinks = m_point.sinks;
    for (const auto& [cookie, sink] : sinks) {
        const HRESULT result = sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                            &parameters, nullptr, nullptr, nullptr);
        if (IsGone(result)) m_point.sinks.erase(cookie);
    }
}

STDMETHODIMP EventSource::EnumConnectionPoints(IEnumConnectionPoints** points) {
    if (points == nullptr) return E_POINTER;
    *points = nullptr;
    return ComMethod([&] { *points = new PointEnumerator({ComPtr<IConnectionPoint>(&m_point)}); });
}

STDMETHODIMP EventSource::FindConnectionPoint(REFIID id, IConnectionPoint** point) {
    if (point == nullptr) return E_POINTER;
    *point = nullptr;
    return ComMethod([&] {
        if (!IsEqualIID(id, m_point.events)) throw AutomationError(CONNECT_E_NOCONNECTION);
        m_point.AddRef();
        *point = &m_point;
    });
}

STDMETHODIMP EventSource::Point::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IConnectionPoint)) return E_NOINTERFACE;
    *object = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP EventSource::Point::GetConnectionInterface(IID* id) {
    if (id == nullptr) return E_POINTER;
    return ComMethod([&] { *id = events; });
}

STDMETHODIMP EventSource::Point::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (container == nullptr) return E_POINTER;
    *container = nullptr;
    return ComMethod([&] {
        *container = source.Container();
        AddRef();
    });
}

STDMETHODIMP EventSource::Point::Advise(IUnknown* sink, DWORD* cookie) {
    if (sink == nullptr || cookie == nullptr) return E_POINTER;
    *cookie = 0;
    return ComMethod([&] {
        ComPtr<IDispatch> dispatch;
        if (FAILED(sink->QueryInterface(IID_PPV_ARGS(&dispatch)))) {
            throw AutomationError(CONNECT_E_CANNOTCONNECT);
        }
        sinks.emplace(lastCookie + 1, dispatch);
        *cookie = ++lastCookie;
    });
}

STDMETHODIMP EventSource::Point::Unadvise(DWORD cookie) {
    return ComMethod([&] {
        if (sinks.erase(cookie) == 0) throw AutomationError(CONNECT_E_NOCONNECTION);
    });
}

STDMETHODIMP EventSource::Point::EnumConnections(IEnumConnections** connections) {
    if (connections == nullptr) return E_POINTER;
    *connections = nullptr;
    return ComMethod([&] {
        std::vector<HeldConnection> held;
        for (const auto& [cookie, sink] : sinks)
            held.push_back({sink, cookie});
        *connections = new ConnectionEnumerator(std::move(held));
    });
}
