// The manager's process: it registers itself, or serves clients until none is left.
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>
#include <ocidl.h>

#include "app/config.h"
#include "app/config_control.h"
#include "app/config_globals.h"
#include "app/frm_config.h"
#include "platform/com/class_object.h"
#include "platform/com/registration.h"
#include "platform/com/server_security.h"
#include "platform/com/wine_workarounds.h"
#include "platform/system_library.h"
#include "tray/type_libraries.h"

namespace {

// Libraries are loaded from the system's folder only, never from the program's own folder or the current one.
// Windows 7 has the function only with an update, so it is looked up.
void LoadSystemLibrariesOnly() {
    using SetDirectories = BOOL WINAPI(DWORD);
    if (auto* const set =
            FunctionOf<SetDirectories>(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")) {
        set(LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
}

void RunMessageLoop() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (g_frmConfig != nullptr && g_frmConfig->IsFormMessage(message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

HRESULT Serve() {
    // First of all: COM otherwise chooses by itself who may call.
    const HRESULT admission = AdmitOwnUserOnly();
    if (FAILED(admission)) return admission;

    const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_STANDARD_CLASSES | ICC_LINK_CLASS |
                                                            ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES |
                                                            ICC_UPDOWN_CLASS};
    InitCommonControlsEx(&classes);

    const HRESULT result = ResultOf([] {
        WorkAroundWine({IID_IDispatch, IID_ISupportErrorInfo, IID_IProvideClassInfo,
                        IID_IConnectionPointContainer, IID_IConnectionPoint, __uuidof(_Config),
                        __uuidof(_ConfigControl)});
        const ClassRegistration configControl(__uuidof(ConfigControl), [](REFIID id, void** object) {
            return MakeObject<ConfigControl>()->QueryInterface(id, object);
        });
        ThrowIfFailed(CoResumeClassObjects());
        RunMessageLoop();
    });
    // Before COM is left: the objects hold connections to other processes.
    g_oConfig.Reset();
    g_frmConfig.Reset();
    return result;
}

// What the manager registers: its one creatable class and its public type library.
ServerDescription Description() {
    return {{{__uuidof(ConfigControl), L"SentrelConfig.ConfigControl", L"Calvane configuration manager",
              kPublicTypeLibrary}},
            {kPublicTypeLibrary}};
}

HRESULT Run(const wchar_t* commandLine) {
    switch (ParseServerCommand(commandLine)) {
        case ServerCommand::Register:
            return RegisterServer(Description());
        case ServerCommand::Unregister:
            return UnregisterServer(Description());
        case ServerCommand::Run:
            return Serve();
        case ServerCommand::None:
            return S_OK;  // clients start the manager, not people
    }
    return E_INVALIDARG;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    LoadSystemLibrariesOnly();
    HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    if (FAILED(result)) return result;
    result = Run(commandLine);
    CoUninitialize();
    return result;
}
