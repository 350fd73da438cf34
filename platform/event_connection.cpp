#include "platform/event_connection.h"

#include <utility>

#include "platform/com_method.h"

class EventConnection::Sink final : public IDispatch {
public:
    Sink(REFIID events, EventHandlers handlers) : m_events(events), m_handlers(std::move(handlers)) {}

    void Silence() noexcept { m_silent = true; }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IDispatch) && !IsEqualIID(id, m_events)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&m_references);
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) return E_POINTER;
        *count = 0;
        return S_OK;
    }

    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }

    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        if (arguments == nullptr) return E_POINTER;
        const auto handler = m_handlers.find(event);
        if (handler == m_handlers.end()) return DISP_E_MEMBERNOTFOUND;
        if (m_silent) return S_OK;
        return ComMethod([&] { handler->second(*arguments); });
    }

private:
    ~Sink() = default;

    LONG m_references = 1;
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
}

EventConnection::~EventConnection() {
    m_sink->Silence();
    m_point->Unadvise(m_cookie);
}
