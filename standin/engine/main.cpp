// An engine that stands in for the real one: it serves the manager, closes no window, and does what it is
// told.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <optional>

#include "platform/com/class_object.h"
#include "platform/com/com_ptr.h"
#include "platform/com/wine_workarounds.h"
#include "platform/com/registration.h"
#include "sentrel1.h"
#include "standin.h"
#include "standin/engine/control_object.h"
#include "standin/engine/engine.h"
#include "standin/engine/engine_window.h"
#include "standin/engine/resource.h"
#include "standin/engine/sentrel_app_object.h"

namespace {

ServerDescription Description() {
    return {
        .classes = {{CLSID_SentrelApp, L"Sentrel1.SentrelApp", L"Sentrel blocking engine (stand-in)",
                     kEngineTypeLibrary},
                    {CLSID_Control, L"SentrelStandin.Control", L"Sentrel stand-in engine controls",
                     kControlTypeLibrary}},
        .typeLibraries = {kEngineTypeLibrary, kControlTypeLibrary},
    };
}

void Serve() {
    WorkAroundWine({IID_IDispatch, IID_ISupportErrorInfo, IID_IConnectionPointContainer, IID_IConnectionPoint,
                    __uuidof(_SentrelApp), __uuidof(_Popup), __uuidof(_Control)});
    Engine engine;
    EngineWindow window(engine);
    std::optional<ClassRegistration> applications;
    std::optional<ClassRegistration> controls;
    // Not every COM runtime notices that a process has ended: it would send the next client to the dead one,
    // were the classes not withdrawn first.
    engine.calls.Die = [&] {
        applications.reset();
        controls.reset();
        TerminateProcess(GetCurrentProcess(), 1);
    };
    applications.emplace(CLSID_SentrelApp, [&](REFIID id, void** object) {
        return MakeObject<SentrelAppObject>(engine).CopyTo(id, object);
    });
    controls.emplace(CLSID_Control, [&](REFIID id, void** object) {
        return MakeObject<ControlObject>(engine, [&] { window.Open(); }).CopyTo(id, object);
    });
    ThrowIfFailed(CoResumeClassObjects());

    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (window.Hwnd() != nullptr && IsDialogMessageW(window.Hwnd(), &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Started by hand, the program asks for the window of the process that serves the clients, which COM starts
// if there is none: so there is never a second engine beside the one that the manager listens to.
void OpenWindow() {
    ComPtr<_Control> control;
    HRESULT result = CoCreateInstance(CLSID_Control, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control));
    if (SUCCEEDED(result)) {
        AllowSetForegroundWindow(ASFW_ANY);
        result = control->OpenWindow();
    }
    if (FAILED(result)) {
        MessageBoxW(nullptr, L"The engine cannot be reached. Register it with the switch /RegServer.",
                    L"Sentrel Stand-in", MB_OK | MB_ICONWARNING);
    }
    ThrowIfFailed(result);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(initialized)) return initialized;

    const HRESULT result = ResultOf([&] {
        switch (ParseServerCommand(commandLine)) {
            case ServerCommand::Register:
                ThrowIfFailed(RegisterServer(Description()));
                break;
            case ServerCommand::Unregister:
                ThrowIfFailed(UnregisterServer(Description()));
                break;
            case ServerCommand::Run:
                Serve();
                break;
            case ServerCommand::None:
                OpenWindow();
                break;
        }
    });
    CoUninitialize();
    return result;
}
