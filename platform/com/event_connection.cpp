#include "platform/com/event_connection.h"

#include <utility>

#include "platform/com/com_method.h"
#include "platform/com/counted_object.h"

class EventConnection::Sink final : public CountedObject<IDispatch> {
public:
    Sink(REFIID events, EventHandlers handlers) : m_events(events), m_handlers(std::move(handlers)) {}

    void Silence() noexcept { m_silent = true; }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) return E_POINTER;
        return ComMethod([&] { *count = 0; });
    }

    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override {
        return ComMethod([] { return E_NOTIMPL; });
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return ComMethod([] { return DISP_E_UNKNOWNNAME; });
    }

    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        if (arguments == nullptr) return E_POINTER;
        return ComMethod([&] {
            if (arguments->cArgs != 0 && arguments->rgvarg == nullptr) return E_INVALIDARG;
            const auto handler = m_handlers.find(event);
            if (handler == m_handlers.end()) return DISP_E_MEMBERNOTFOUND;
            if (!m_silent) handler->second(*arguments);
            return S_OK;
        });
    }

private:
    bool Supports(REFIID id) const override {
        return CountedObject::Supports(id) || IsEqualIID(id, m_events);
    }

    const IID m_events;
    const EventHandlers m_handlers;
    bool m_silent = false;
};

EventConnection::EventConnection(IUnknown* source, REFIID events, EventHandlers handlers)
    : m_sink(MakeObject<Sink>(events, std::move(handlers))) {
    if (source == nullptr) RaiseError(ErrorNumber::ObjectNotSet);
    ComPtr<IConnectionPointContainer> container;
    ThrowIfFailed(source->QueryInterface(IID_PPV_ARGS(&container)));
    ThrowIfFailed(container->FindConnectionPoint(events, &m_point));
    ThrowIfFailed(m_point->Advise(m_sink.Get(), &m_cookie));
    m_isConnected = true;
}

EventConnection::~EventConnection() {
    if (m_isConnected) Disconnect();
}

HRESULT EventConnection::Disconnect() noexcept {
    m_sink->Silence();
    m_isConnected = false;
    return m_point->Unadvise(m_cookie);
}
