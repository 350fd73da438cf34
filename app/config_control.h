// The creatable class: how clients get the shared Config, and how they end the manager.
#pragma once

#include "platform/com/dispatch_object.h"
#include "tray/type_libraries.h"
#include "sentrel_config.h"

// What a show type asks for, beside the names that the type library gives to 1 and 2.
enum ShowType : long { kShowWindow = formShow, kShowAbout = 3 };

class ConfigControl final : public DispatchObject<_ConfigControl, kPublicTypeLibrary> {
public:
    ConfigControl() : DispatchObject(Holder::Client) {}

    // Any show type but 1 and 3 leaves the window as it is. nShowType is never written.
    STDMETHODIMP ConfigInstance(long* nShowType, IDispatch** config) override;

    // Ends the manager for every client, however many there are.
    STDMETHODIMP ReleaseConfig() override;
};
