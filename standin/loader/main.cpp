// Loads the configuration manager: hidden, as at the start of Windows; with the switches /show and /about
// visible; /release ends it. Says nothing; the exit code is the HRESULT of what was asked for.
#include <windows.h>
#include <objbase.h>

#include "platform/com/com_ptr.h"
#include "sentrel_config_face.h"

namespace {

// ConfigInstance's show types.
constexpr long kShown = 1;
constexpr long kHidden = 2;
constexpr long kShownOnAbout = 3;

HRESULT CreateControl(ComPtr<_ConfigControl>& control) {
    return CoCreateInstance(CLSID_ConfigControl, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control));
}

// The manager lives on when the loader has let go of it: its window keeps it.
HRESULT Load(long showType) {
    ComPtr<_ConfigControl> control;
    const HRESULT result = CreateControl(control);
    if (FAILED(result)) return result;
    // The process that was started last may put windows in front, and it may pass that right on.
    AllowSetForegroundWindow(ASFW_ANY);
    ComPtr<IDispatch> config;
    return control->ConfigInstance(&showType, &config);
}

HRESULT Release() {
    // A manager whose window is not there need not be started just to be ended. The window may be hidden.
    if (FindWindowW(nullptr, L"Calvane") == nullptr) return S_OK;
    ComPtr<_ConfigControl> control;
    HRESULT result = CreateControl(control);
    if (SUCCEEDED(result)) result = control->ReleaseConfig();
    // The manager ends inside the call, so that its reply is lost.
    return result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED) ? S_OK : result;
}

HRESULT Run(const wchar_t* command) {
    if (lstrcmpiW(command, L"/release") == 0) return Release();
    if (lstrcmpiW(command, L"/show") == 0) return Load(kShown);
    if (lstrcmpiW(command, L"/about") == 0) return Load(kShownOnAbout);
    return Load(kHidden);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(result)) return result;
    result = Run(commandLine);
    CoUninitialize();
    return FAILED(result) ? result : 0;
}
