#include "app/config.h"

#include "app/config_globals.h"
#include "app/frm_config.h"
#include "platform/com/variant.h"
#include "store/server_directory.h"
#include "tray/bas_shell_notify.h"

namespace {

constexpr wchar_t kLoaderName[] = L"CalvaneConfigLoader.exe";

// After ReleaseConfig there is no window any more, and the process is about to end.
frmConfig& Form() {
    if (g_frmConfig == nullptr) throw AutomationError(CO_E_SERVER_STOPPING);
    return *g_frmConfig.Get();
}

}  // namespace

void Config::Initialise() {
    // ServerDirectory ends with a separator where it is the root of a drive, and the path then has two. It is
    // stored as it is: Windows takes both for one.
    g_strLoaderPath = ServerDirectory() + L"\\" + kLoaderName;
    g_frmConfig = MakeObject<frmConfig>();
    g_frmConfig->Initialise();
    // Connecting to the engine has let other clients' calls in; one of them may have been ReleaseConfig.
    g_lngConfigHwnd = Form().Handle();
}

STDMETHODIMP Config::get_ConfigHwnd(VARIANT* value) {
    if (value == nullptr) return E_POINTER;
    VariantInit(value);
    return ComMethod([&] { *value = Variant(Form().Handle()).Detach(); });
}

STDMETHODIMP Config::get_ConfigForm(VARIANT* value) {
    if (value == nullptr) return E_POINTER;
    VariantInit(value);
    return ComMethod([&] { *value = Variant(static_cast<_frmConfig*>(&Form())).Detach(); });
}

STDMETHODIMP Config::get_ShellIconClass(VARIANT* value) {
    if (value == nullptr) return E_POINTER;
    VariantInit(value);
    return ComMethod([&] {
        ComPtr<IDispatch> icon;
        ThrowIfFailed(Form().get_m_oShellIcon(&icon));
        *value = Variant(icon.Get()).Detach();
    });
}

void* Config::FindOtherInterface(REFIID id) {
    if (IsEqualIID(id, IID_IConnectionPointContainer)) return m_events.Container();
    if (IsEqualIID(id, IID_IProvideClassInfo)) return static_cast<IProvideClassInfo*>(this);
    return nullptr;
}

STDMETHODIMP Config::GetClassInfo(ITypeInfo** classInfo) {
    if (classInfo == nullptr) return E_POINTER;
    *classInfo = nullptr;
    return ComMethod([&] { *classInfo = OwnTypeInfo(kPublicTypeLibrary, CLSID_Config).Detach(); });
}
