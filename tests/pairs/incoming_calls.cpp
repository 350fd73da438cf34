// What clients call: every member of every public object.
#include <tuple>
#include <type_traits>

#include "platform/com/event_connection.h"
#include "tests/pairs/pairs.h"

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

// The object with this interface; null where there is none.
template <class Object>
ComPtr<Object> Find(Case& manager) {
    if constexpr (std::is_same_v<Object, _Config>) {
        return static_cast<_Config*>(g_oConfig.Get());
    } else if constexpr (std::is_same_v<Object, _frmConfig>) {
        return static_cast<_frmConfig*>(g_frmConfig.Get());
    } else if constexpr (std::is_same_v<Object, _ShellNotification>) {
        return manager.Icon();
    } else {
        return manager.Picture();
    }
}

template <class Object, auto kCall>
Came On(Case& manager) {
    const ComPtr<Object> object = Find<Object>(manager);
    if (object == nullptr) return Came::NotPossible;
    kCall(*object.Get(), manager);
    return Came::In;
}

template <class Type>
void Free(Type& value) {
    if constexpr (std::is_same_v<Type, BSTR>) SysFreeString(value);
    if constexpr (std::is_same_v<Type, VARIANT>) VariantClear(&value);
    if constexpr (std::is_same_v<Type, IDispatch*>) {
        if (value != nullptr) value->Release();
    }
}

// Calls a member; its last parameter, where there is no argument for it, receives a result.
template <class Object, class... Parameters>
Came CallMember(Case& manager, HRESULT (STDMETHODCALLTYPE Object::*member)(Parameters...),
                auto... arguments) {
    const ComPtr<Object> object = Find<Object>(manager);
    if (object == nullptr) return Came::NotPossible;
    if constexpr (sizeof...(Parameters) == sizeof...(arguments)) {
        (object.Get()->*member)(arguments...);
    } else {
        using Last = std::tuple_element_t<sizeof...(arguments), std::tuple<Parameters...>>;
        std::remove_pointer_t<Last> result{};
        (object.Get()->*member)(arguments..., &result);
        Free(result);
    }
    return Came::In;
}

template <auto kMember, auto... kArguments>
Came Call(Case& manager) {
    return CallMember(manager, kMember, kArguments...);
}

template <class Object, class Events>
Came Listen(Case& manager) {
    const ComPtr<Object> source = Find<Object>(manager);
    if (source == nullptr) return Came::NotPossible;
    ResumeNext([&] { EventConnection(source.Get(), __uuidof(Events), {}); });
    return Came::In;
}

BSTR TextOf(const Variant& text) {
    return text.Value().bstrVal;
}

constexpr IncomingWork kCalls[] = {
    {"ConfigInstance(1)", Instance<1>, {.showsWindow = true}},
    {"ConfigInstance(2)", Instance<2>},
    {"ConfigInstance(3)", Instance<3>, {.showsWindow = true}},
    {"ConfigInstance of another client", AnotherControl, {.showsWindow = true}},
    {"ConfigHwnd", Call<&_Config::get_ConfigHwnd>},
    {"ConfigForm", Call<&_Config::get_ConfigForm>},
    {"ShellIconClass", Call<&_Config::get_ShellIconClass>},
    {"Config's events", Listen<_Config, __Config>},
    {"Config's class", On<_Config,
                          [](_Config& config, Case&) {
                              ComPtr<IProvideClassInfo> provider;
                              ComPtr<ITypeInfo> info;
                              if (SUCCEEDED(config.QueryInterface(IID_PPV_ARGS(&provider))))
                                  provider->GetClassInfo(&info);
                          }>},
    {"b_OKtoUnload", Call<&_frmConfig::get_b_OKtoUnload>},
    {"b_OKtoUnload = False", Call<&_frmConfig::put_b_OKtoUnload, VARIANT_FALSE>},
    {"b_OKtoUnload = True", Call<&_frmConfig::put_b_OKtoUnload, VARIANT_TRUE>},
    {"m_oShellIcon", Call<&_frmConfig::get_m_oShellIcon>},
    {"m_oPopup", Call<&_frmConfig::get_m_oPopup>},
    {"Show", Call<&_frmConfig::Show>, {.showsWindow = true}},
    {"Hide", Call<&_frmConfig::Hide>},
    {"Visible", Call<&_frmConfig::get_Visible>},
    {"Visible = True", Call<&_frmConfig::put_Visible, VARIANT_TRUE>, {.showsWindow = true}},
    {"Visible = False", Call<&_frmConfig::put_Visible, VARIANT_FALSE>},
    {"Caption", Call<&_frmConfig::get_Caption>},
    {"Caption = text", On<_frmConfig, [](_frmConfig& form, Case&) { form.put_Caption(TextOf(L"Calvane")); }>},
    {"hWnd", Call<&_frmConfig::get_hWnd>},
    {"picShellIcon", Call<&_frmConfig::get_picShellIcon>},
    {"picTray", Call<&_frmConfig::get_picTray, short{2}>},
    {"ControlHwnd", On<_frmConfig,
                       [](_frmConfig& form, Case&) {
                           LONG value;
                           form.ControlHwnd(TextOf(L"cmdApply"), &value);
                       }>},
    {"ToolTip", Call<&_ShellNotification::get_ToolTip>},
    {"ToolTip = text",
     On<_ShellNotification, [](_ShellNotification& icon, Case&) { icon.put_ToolTip(TextOf(L"Sentrel")); }>},
    {"InitShellNotify", On<_ShellNotification,
                           [](_ShellNotification& icon, Case& manager) {
                               icon.InitShellNotify(HandleToLong(manager.Window()), kTrayCallback);
                           }>},
    {"AddIcon", On<_ShellNotification, [](_ShellNotification&, Case& manager) { manager.AddIcon(); }>},
    {"RemoveIcon and AddIcon of a foreign picture",
     On<_ShellNotification,
        [](_ShellNotification& icon, Case& manager) {
            icon.RemoveIcon();
            icon.AddIcon(manager.outside.MakePictureBox().Get());
        }>,
     {.takesIcon = true}},
    {"RemoveIcon", Call<&_ShellNotification::RemoveIcon>, {.takesIcon = true}},
    {"AnimateIcon", On<_ShellNotification, [](_ShellNotification&, Case& manager) { manager.Animate(); }>},
    {"the icon's events", Listen<_ShellNotification, __ShellNotification>},
    {"Name of a picture box", Call<&_PictureBox::get_Name>},
    {"Picture of a picture box", Call<&_PictureBox::get_Picture>},
};

}  // namespace

std::span<const IncomingWork> IncomingCalls() {
    return kCalls;
}
