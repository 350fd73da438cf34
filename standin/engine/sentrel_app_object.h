// The application-wide object of the engine, from which a client gets its engine object.
#pragma once

#include "platform/com/dispatch_object.h"
#include "sentrel1.h"
#include "standin/engine/engine.h"
#include "standin/engine/resource.h"

class SentrelAppObject final : public DispatchObject<_SentrelApp, kEngineTypeLibrary> {
public:
    explicit SentrelAppObject(Engine& engine) : DispatchObject(Holder::Client), m_engine(engine) {}

    // Each client gets an engine object of its own; all of them lead to the one engine.
    STDMETHODIMP CreatePopup(long configHwnd, long configForm, long* mode, _Popup** popup) override;
    STDMETHODIMP ReleasePopup(long configHwnd, long configForm) override;

private:
    Engine& m_engine;
};
