// The shared configuration object, through which clients reach the window and the tray icon.
#pragma once

#include <ocidl.h>

#include "platform/com/dispatch_object.h"
#include "platform/com/event_source.h"
#include "tray/type_libraries.h"
#include "sentrel_config.h"

class Config final : public DispatchObject<_Config, kPublicTypeLibrary>, private IProvideClassInfo {
public:
    Config() : DispatchObject(Holder::Server), m_events(static_cast<_Config&>(*this), __uuidof(__Config)) {}

    // Fills g_strLoaderPath, makes the configuration window (g_frmConfig) and loads it, hidden
    // (g_lngConfigHwnd). Throws AutomationError when the window cannot be made or loaded.
    void Initialise();

    STDMETHODIMP get_ConfigHwnd(VARIANT* value) override;
    STDMETHODIMP get_ConfigForm(VARIANT* value) override;
    STDMETHODIMP get_ShellIconClass(VARIANT* value) override;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        return DispatchObject::QueryInterface(id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return DispatchObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return DispatchObject::Release(); }

protected:
    void* FindOtherInterface(REFIID id) override;

private:
    STDMETHODIMP GetClassInfo(ITypeInfo** classInfo) override;

    // ConfigClosed is declared for clients to connect to; nothing raises it.
    EventSource m_events;
};
