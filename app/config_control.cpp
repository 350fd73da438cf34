#include "app/config_control.h"

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

void CALLBACK EndProcess(HWND, UINT, UINT_PTR, DWORD) {
    ExitProcess(0);
}

// The process ends as soon as the caller has its result: a timer is served by whichever message loop is
// running, also that of a dialog or menu, and only after the present call has returned.
void EndProcessSoon() {
    if (SetTimer(nullptr, 0, USER_TIMER_MINIMUM, EndProcess) == 0) ExitProcess(0);
}

}  // namespace

STDMETHODIMP ConfigControl::ConfigInstance(long* nShowType, IDispatch** config) {
    if (nShowType == nullptr || config == nullptr) return E_POINTER;
    *config = nullptr;
    return ComMethod([&] {
        if (g_oConfig == nullptr) ConfigInMaking().Initialise();
        // Another client's ReleaseConfig may have come in while the window was made.
        if (ServerProcess::Stopping()) throw AutomationError(CO_E_SERVER_STOPPING);
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
        if (g_frmConfig != nullptr) g_frmConfig->Unload();
        // Left to the process: a handler of the window may be further down on the stack, in a dialog's loop.
        g_frmConfig.Detach();
        EndProcessSoon();
    });
}
