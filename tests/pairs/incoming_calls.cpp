// What clients call: every member of every public object.
#include <type_traits>

#include "platform/com/event_connection.h"
#include "tests/pairs/incoming_work.h"
#include "tray/picture_box.h"

namespace {

template <long kShowType>
Came Instance(Case& manager) {
    ComPtr<IDispatch> config;
    manager.Instance(kShowType, config);
    return Came::In;
}

Came AnotherControl(Case&) {
    long showType = formShow;
    ComPtr<IDispatch> config;
    MakeObject<ConfigControl>()->ConfigInstance(&showType, &config);
    return Came::In;
}

// Each calls something of an object that is there.
template <auto kCall>
Came OnConfig(Case&) {
    const ComPtr<Config> config = g_oConfig;
    if (config == nullptr) return Came::NotPossible;
    kCall(static_cast<_Config&>(*config.Get()));
    return Came::In;
}

template <auto kCall>
Came OnForm(Case&) {
    const ComPtr<frmConfig> form = g_frmConfig;
    if (form == nullptr) return Came::NotPossible;
    kCall(static_cast<_frmConfig&>(*form.Get()));
    return Came::In;
}

template <auto kCall>
Came OnIcon(Case& manager) {
    const auto icon = manager.Icon();
    if (icon == nullptr) return Came::NotPossible;
    kCall(*icon.Get(), manager);
    return Came::In;
}

template <auto kCall>
void WithPicture(_frmConfig& form) {
    ComPtr<IDispatch> object;
    ComPtr<_PictureBox> box;
    form.get_picTray(0, &object);
    if (object != nullptr && SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&box)))) kCall(*box.Get());
}

// Reads a property, whatever its type.
template <class Object, class Type>
void Get(Object& object, HRESULT (STDMETHODCALLTYPE Object::*property)(Type*)) {
    Type value{};
    (object.*property)(&value);
    if constexpr (std::is_same_v<Type, BSTR>) SysFreeString(value);
    if constexpr (std::is_same_v<Type, VARIANT>) VariantClear(&value);
    if constexpr (std::is_same_v<Type, IDispatch*>) {
        if (value != nullptr) value->Release();
    }
}

template <auto kProperty>
constexpr auto Read = [](auto& object, auto&...) { Get(object, kProperty); };

void Listen(IUnknown& source, const IID& events) {
    ResumeNext([&] { EventConnection(&source, events, {}); });
}

BSTR TextOf(const Variant& text) {
    return text.Value().bstrVal;
}

void AddIcon(_ShellNotification& icon, Case& manager) {
    ComPtr<IDispatch> picture;
    manager.Form()->get_picShellIcon(&picture);
    icon.AddIcon(picture.Get());
}

constexpr IncomingWork kCalls[] = {
    {.name = "ConfigInstance(1)", .come = Instance<1>, .showsWindow = true},
    {.name = "ConfigInstance(2)", .come = Instance<2>},
    {.name = "ConfigInstance(3)", .come = Instance<3>, .showsWindow = true},
    {.name = "ConfigInstance of another client", .come = AnotherControl, .showsWindow = true},
    {.name = "ConfigHwnd", .come = OnConfig<Read<&_Config::get_ConfigHwnd>>},
    {.name = "ConfigForm", .come = OnConfig<Read<&_Config::get_ConfigForm>>},
    {.name = "ShellIconClass", .come = OnConfig<Read<&_Config::get_ShellIconClass>>},
    {.name = "Config's events",
     .come = OnConfig<[](_Config& config) { Listen(config, __uuidof(__Config)); }>},
    {.name = "Config's class", .come = OnConfig<[](_Config& config) {
                                   ComPtr<IProvideClassInfo> provider;
                                   ComPtr<ITypeInfo> info;
                                   if (SUCCEEDED(config.QueryInterface(IID_PPV_ARGS(&provider))))
                                       provider->GetClassInfo(&info);
                               }>},
    {.name = "b_OKtoUnload", .come = OnForm<Read<&_frmConfig::get_b_OKtoUnload>>},
    {.name = "b_OKtoUnload = False",
     .come = OnForm<[](_frmConfig& form) { form.put_b_OKtoUnload(VARIANT_FALSE); }>},
    {.name = "b_OKtoUnload = True",
     .come = OnForm<[](_frmConfig& form) { form.put_b_OKtoUnload(VARIANT_TRUE); }>},
    {.name = "m_oShellIcon", .come = OnForm<Read<&_frmConfig::get_m_oShellIcon>>},
    {.name = "m_oPopup", .come = OnForm<Read<&_frmConfig::get_m_oPopup>>},
    {.name = "Show", .come = OnForm<[](_frmConfig& form) { form.Show(); }>, .showsWindow = true},
    {.name = "Hide", .come = OnForm<[](_frmConfig& form) { form.Hide(); }>},
    {.name = "Visible", .come = OnForm<Read<&_frmConfig::get_Visible>>},
    {.name = "Visible = True",
     .come = OnForm<[](_frmConfig& form) { form.put_Visible(VARIANT_TRUE); }>,
     .showsWindow = true},
    {.name = "Visible = False", .come = OnForm<[](_frmConfig& form) { form.put_Visible(VARIANT_FALSE); }>},
    {.name = "Caption", .come = OnForm<Read<&_frmConfig::get_Caption>>},
    {.name = "Caption = text",
     .come = OnForm<[](_frmConfig& form) { form.put_Caption(TextOf(L"Calvane")); }>},
    {.name = "hWnd", .come = OnForm<Read<&_frmConfig::get_hWnd>>},
    {.name = "picShellIcon", .come = OnForm<Read<&_frmConfig::get_picShellIcon>>},
    {.name = "picTray", .come = OnForm<[](_frmConfig& form) {
                            ComPtr<IDispatch> picture;
                            form.get_picTray(2, &picture);
                        }>},
    {.name = "ControlHwnd", .come = OnForm<[](_frmConfig& form) {
                                LONG value;
                                form.ControlHwnd(TextOf(L"cmdApply"), &value);
                            }>},
    {.name = "ToolTip", .come = OnIcon<Read<&_ShellNotification::get_ToolTip>>},
    {.name = "ToolTip = text",
     .come = OnIcon<[](_ShellNotification& icon, Case&) { icon.put_ToolTip(TextOf(L"Sentrel")); }>},
    {.name = "InitShellNotify", .come = OnIcon<[](_ShellNotification& icon, Case& manager) {
                                    icon.InitShellNotify(HandleToLong(manager.Window()), kTrayCallback);
                                }>},
    {.name = "AddIcon", .come = OnIcon<AddIcon>},
    {.name = "RemoveIcon and AddIcon of a foreign picture",
     .come = OnIcon<[](_ShellNotification& icon, Case& manager) {
         icon.RemoveIcon();
         icon.AddIcon(manager.outside.MakePictureBox().Get());
     }>,
     .takesIcon = true},
    {.name = "RemoveIcon",
     .come = OnIcon<[](_ShellNotification& icon, Case&) { icon.RemoveIcon(); }>,
     .takesIcon = true},
    {.name = "AnimateIcon", .come = OnIcon<[](_ShellNotification&, Case& manager) { manager.Animate(); }>},
    {.name = "the icon's events",
     .come = OnIcon<[](_ShellNotification& icon, Case&) { Listen(icon, __uuidof(__ShellNotification)); }>},
    {.name = "Name of a picture box", .come = OnForm<WithPicture<Read<&_PictureBox::get_Name>>>},
    {.name = "Picture of a picture box", .come = OnForm<WithPicture<Read<&_PictureBox::get_Picture>>>},
};

}  // namespace

std::span<const IncomingWork> IncomingCalls() {
    return kCalls;
}
