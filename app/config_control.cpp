#include "app/config_control.h"

#include <commctrl.h>

#include <climits>

#include "app/config.h"
#include "app/config_globals.h"
#include "app/frm_config.h"
#include "platform/com/server_process.h"

namespace {

void CountClients(LONG difference) {
    if (difference > 0 ? g_lngClientCount == LONG_MAX : g_lngClientCount == LONG_MIN) {
        RaiseError(ErrorNumber::Overflow);
    }
    g_lngClientCount += difference;
}

// Connecting to the engine lets other calls in while the window is being made: they find g_oConfig set. Where
// the window cannot be made, g_oConfig is emptied again.
class ConfigInMaking {
public:
    ConfigInMaking() { g_oConfig = MakeObject<Config>(); }
    ConfigInMaking(const ConfigInMaking&) = delete;
    ConfigInMaking& operator=(const ConfigInMaking&) = delete;
    ~ConfigInMaking() {
        if (m_made) return;
        g_frmConfig.Reset();
        g_oConfig.Reset();
    }

    void Initialise() {
        g_oConfig->Initialise();
        m_made = true;
    }

private:
    bool m_made = false;
};

// For COM's own threads to send the caller its result. Where they take longer, the caller learns that the
// server is gone.
constexpr DWORD kReplyTime = 50;  // milliseconds

// COM's threads may be in the midst of other clients' calls. ExitProcess would stop them there and then let
// the libraries end, which wait for locks that nobody gives up any more.
void EndProcess() {
    TerminateProcess(GetCurrentProcess(), 0);
}

LRESULT CALLBACK EndBehindCall(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcW(hwnd, message, wParam, lParam);
    Sleep(kReplyTime);
    EndProcess();
    return 0;
}

// The process ends as soon as the caller has its result. A posted message is served by whichever message loop
// is running, also that of a dialog or menu, only after the present call has returned, and in its turn among
// the calls of clients, where a timer would wait until there are none.
void EndProcessSoon() {
    const HWND window =
        CreateWindowExW(0, WC_STATICW, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (window == nullptr) return EndProcess();
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&EndBehindCall));
    if (!PostMessageW(window, WM_APP, 0, 0)) EndProcess();
}

// For an engine that does not reply while the window lets go of it. One that is busy may take ten seconds.
constexpr DWORD kLeaveTime = 30000;  // milliseconds

void CALLBACK EndWithoutLeave(void*, BOOLEAN) {
    EndProcess();
}

// The time is taken by a thread of Windows' own: this one may wait for the engine.
void EndProcessInTime() {
    HANDLE timer = nullptr;
    CreateTimerQueueTimer(&timer, nullptr, &EndWithoutLeave, nullptr, kLeaveTime, 0, WT_EXECUTEONLYONCE);
}

}  // namespace

STDMETHODIMP ConfigControl::ConfigInstance(long* nShowType, IDispatch** config) {
    if (nShowType == nullptr || config == nullptr) return E_POINTER;
    *config = nullptr;
    return ComMethod([&] {
        if (g_oConfig == nullptr) ConfigInMaking().Initialise();
        // Another client's ReleaseConfig may have come in while the window was made; or this call, while one
        // that could not be made is taken down again.
        if (g_frmConfig == nullptr) throw AutomationError(CO_E_SERVER_STOPPING);
        if (*nShowType == kShowWindow) g_frmConfig->ShowModeless();
        if (*nShowType == kShowAbout) g_frmConfig->ShowAbout();
        CountClients(+1);
        ThrowIfFailed(g_oConfig.CopyTo(config));
    });
}

STDMETHODIMP ConfigControl::ReleaseConfig() {
    return ComMethod([&] {
        CountClients(-1);
        ServerProcess::Stop();
        EndProcessInTime();
        if (g_frmConfig != nullptr) g_frmConfig->Unload();
        // Left to the process: a handler of the window may be further down on the stack, in a dialog's loop.
        g_frmConfig.Detach();
        EndProcessSoon();
    });
}
