// The engine object that a client holds: _Popup and its events.
#pragma once

#include "platform/com/dispatch_object.h"
#include "platform/com/event_source.h"
#include "sentrel1.h"
#include "standin/engine/engine.h"
#include "standin/engine/resource.h"

class PopupObject final : public DispatchObject<_Popup, kEngineTypeLibrary> {
public:
    // engine outlives every client.
    explicit PopupObject(Engine& engine);

    void Raise(DISPID event, const std::vector<Variant>& arguments) { m_events.Raise(event, arguments); }
    size_t ConnectionCount() const noexcept { return m_events.ConnectionCount(); }

    STDMETHODIMP get_State(long* value) override;
    STDMETHODIMP Start() override;
    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP ReloadSettings() override;
    STDMETHODIMP get_LogFile(BSTR* value) override;

protected:
    ~PopupObject() override { m_engine.Leave(this); }
    void* FindOtherInterface(REFIID id) override;

private:
    Engine& m_engine;
    EventSource m_events;
};
