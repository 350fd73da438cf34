// Shows the About page and tells the window's handle and caption; with the argument "end", ends the manager.
//
// sentrel_config.h is what the IDL compiler makes of the manager's interfaces. It lies beside this file where
// Calvane is installed.
#include <windows.h>
#include <oleauto.h>
#include <wrl/client.h>

#include <cstdio>
#include <cwchar>

#include "sentrel_config.h"

using Microsoft::WRL::ComPtr;

namespace {

// The members of the objects behind ConfigForm and ShellIconClass are called by name.
HRESULT ReadProperty(IDispatch* object, const wchar_t* name, VARIANT* value) {
    auto* text = const_cast<wchar_t*>(name);
    DISPID id = DISPID_UNKNOWN;
    const HRESULT result = object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(result)) return result;
    DISPPARAMS none{};
    return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value, nullptr,
                          nullptr);
}

HRESULT Run(bool end) {
    ComPtr<_ConfigControl> control;
    HRESULT result =
        CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control));
    if (FAILED(result)) return result;
    long showType = 3;
    ComPtr<IDispatch> object;
    result = control->ConfigInstance(&showType, &object);
    ComPtr<_Config> config;
    if (SUCCEEDED(result)) result = object.As(&config);
    if (FAILED(result)) return result;

    VARIANT handle{};
    VARIANT form{};
    VARIANT caption{};
    result = config->get_ConfigHwnd(&handle);
    if (SUCCEEDED(result)) result = config->get_ConfigForm(&form);
    if (SUCCEEDED(result)) result = ReadProperty(form.pdispVal, L"Caption", &caption);
    if (SUCCEEDED(result)) std::wprintf(L"Window %ld, caption: %ls\n", handle.lVal, caption.bstrVal);
    VariantClear(&caption);
    VariantClear(&form);
    VariantClear(&handle);

    if (end && SUCCEEDED(result)) result = control->ReleaseConfig();
    return result;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(result)) return result;
    result = Run(count > 1 && std::wcscmp(arguments[1], L"end") == 0);
    CoUninitialize();
    if (FAILED(result))
        std::fwprintf(stderr, L"The call failed with 0x%08lX.\n", static_cast<unsigned long>(result));
    return FAILED(result) ? 1 : 0;
}
