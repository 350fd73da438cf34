// The scriptable controls of the engine.
#pragma once

#include <functional>

#include "platform/com/dispatch_object.h"
#include "standin.h"
#include "standin/engine/engine.h"
#include "standin/engine/resource.h"

class ControlObject final : public DispatchObject<_Control, kControlTypeLibrary> {
public:
    ControlObject(Engine& engine, std::function<void()> openWindow)
        : DispatchObject(Holder::Client), m_engine(engine), m_openWindow(std::move(openWindow)) {}

    STDMETHODIMP get_State(long* value) override;
    STDMETHODIMP put_State(long value) override;
    STDMETHODIMP get_LogFile(BSTR* value) override;
    STDMETHODIMP put_LogFile(BSTR value) override;
    STDMETHODIMP get_Calls(BSTR* value) override;
    STDMETHODIMP get_Stamped(VARIANT_BOOL* value) override;
    STDMETHODIMP put_Stamped(VARIANT_BOOL value) override;
    STDMETHODIMP get_RaiseByItself(VARIANT_BOOL* value) override;
    STDMETHODIMP put_RaiseByItself(VARIANT_BOOL value) override;
    STDMETHODIMP get_WatchValue(BSTR* value) override;
    STDMETHODIMP put_WatchValue(BSTR value) override;
    STDMETHODIMP get_Popups(long* value) override;
    STDMETHODIMP get_Connections(long* value) override;

    STDMETHODIMP RaiseKilled(long hwnd, BSTR caption) override;
    STDMETHODIMP RaisePaused() override;
    STDMETHODIMP RaiseStarted() override;
    STDMETHODIMP RaiseStopped() override;
    STDMETHODIMP ClosePopup(long hwnd, BSTR address) override;
    STDMETHODIMP ClearCalls() override;
    STDMETHODIMP FailNext(BSTR member, long result) override;
    STDMETHODIMP HoldNext(BSTR member) override;
    STDMETHODIMP DieIn(BSTR member) override;
    STDMETHODIMP OpenWindow() override;
    STDMETHODIMP Quit() override;
    STDMETHODIMP Reset() override;

private:
    Engine& m_engine;
    const std::function<void()> m_openWindow;
};
