#include "tests/engine_storm/event_sink.h"

#include <ocidl.h>

#include <algorithm>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "sentrel1.h"
#include "tests/support/automation.h"

EventSink::EventSink(IDispatch* form) {
    const ComPtr<IDispatch> popup = ObjectIn(Get(form, L"m_oPopup"));
    ComPtr<IConnectionPointContainer> container;
    ThrowIfFailed(popup->QueryInterface(IID_PPV_ARGS(&container)));
    ComPtr<IConnectionPoint> point;
    ThrowIfFailed(container->FindConnectionPoint(__uuidof(__Popup), &point));
    ComPtr<IEnumConnections> connections;
    ThrowIfFailed(point->EnumConnections(&connections));
    CONNECTDATA connection{};
    ULONG fetched = 0;
    // Between processes Wine returns any result and any count; the connection itself is right.
    connections->Next(1, &connection, &fetched);
    if (connection.pUnk == nullptr) RaiseError(ErrorNumber::ObjectNotSet);
    const HRESULT result = connection.pUnk->QueryInterface(IID_PPV_ARGS(&m_sink));
    connection.pUnk->Release();
    ThrowIfFailed(result);
}

HRESULT EventSink::Killed() {
    const Variant caption(L"Win a prize");
    const Variant hwnd(4711L);
    VARIANT values[] = {caption.Value(), hwnd.Value()};
    return Raise(1, {values, nullptr, 2, 0});
}

HRESULT EventSink::Raise(DISPID event, DISPPARAMS arguments) {
    const DWORD start = GetTickCount();
    const HRESULT result = m_sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments,
                                          nullptr, nullptr, nullptr);
    m_longest = std::max(m_longest, GetTickCount() - start);
    ++m_raised;
    return result;
}
