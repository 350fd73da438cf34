// Loads the configuration manager: hidden, as at the start of Windows, and silent; with the switches /show
// and /about visible, and with a message when there is no manager; /release ends it. The exit code is the
// HRESULT of what was asked for.
#include <windows.h>
#include <objbase.h>

#include <array>
#include <string>

#include "platform/com/com_ptr.h"
#include "sentrel_config.h"
#include "standin/loader/running_manager.h"

namespace {

// ConfigInstance's show types.
constexpr long kShown = 1;
constexpr long kHidden = 2;
constexpr long kShownOnAbout = 3;

constexpr DWORD kEndMilliseconds = 5000;

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

// Somebody waits for a window.
HRESULT Show(long showType) {
    const HRESULT result = Load(showType);
    if (SUCCEEDED(result)) return result;
    std::array<wchar_t, 512> reason{};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                   nullptr, static_cast<DWORD>(result), 0, reason.data(), static_cast<DWORD>(reason.size()),
                   nullptr);
    std::array<wchar_t, 16> code{};
    wsprintfW(code.data(), L"0x%08X", result);
    const std::wstring text =
        L"The configuration manager cannot be started. Installing Calvane again helps.\n\n" +
        std::wstring(code.data()) + L"  " + reason.data();
    MessageBoxW(nullptr, text.c_str(), L"Calvane", MB_OK | MB_ICONERROR | MB_SETFOREGROUND);
    return result;
}

// A manager that does not run need not be started just to be ended.
HRESULT Release() {
    const ProcessHandle manager = RunningManager();
    if (!manager) return S_OK;
    ComPtr<_ConfigControl> control;
    HRESULT result = CreateControl(control);
    if (SUCCEEDED(result)) result = control->ReleaseConfig();
    // The manager ends inside the call, so that its reply is lost.
    if (FAILED(result) && result != HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)) return result;
    const bool ended = WaitForSingleObject(manager.Get(), kEndMilliseconds) == WAIT_OBJECT_0;
    return ended ? S_OK : HRESULT_FROM_WIN32(WAIT_TIMEOUT);
}

HRESULT Run(const wchar_t* command) {
    if (lstrcmpiW(command, L"/release") == 0) return Release();
    if (lstrcmpiW(command, L"/show") == 0) return Show(kShown);
    if (lstrcmpiW(command, L"/about") == 0) return Show(kShownOnAbout);
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
