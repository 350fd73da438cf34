#include "standin/engine/engine_window.h"

#include "platform/automation_error.h"
#include "platform/com/server_process.h"
#include "standin/engine/resource.h"

namespace {

constexpr wchar_t kTitle[] = L"Sentrel Stand-in";
constexpr wchar_t kFirstAddress[] = L"http://ads.example.com/popup.html";

std::wstring StateText(long state) {
    switch (state) {
        case kRunning:
            return L"Running";
        case kStopped:
            return L"Stopped";
        case kPaused:
            return L"Paused";
        default:
            return L"State " + std::to_wstring(state);
    }
}

}  // namespace

EngineWindow::EngineWindow(Engine& engine)
    : Dialog(IDD_ENGINE),
      m_engine(engine),
      m_lblState(L"lblState", IDC_STATE),
      m_txtAddress(L"txtAddress", IDC_ADDRESS),
      m_cmdClosePopup(L"cmdClosePopup", IDC_CLOSE_POPUP),
      m_cmdStart(L"cmdStart", IDC_START),
      m_cmdStop(L"cmdStop", IDC_STOP),
      m_cmdPause(L"cmdPause", IDC_PAUSE),
      m_controls{&m_lblState, &m_txtAddress, &m_cmdClosePopup, &m_cmdStart, &m_cmdStop, &m_cmdPause} {
    m_engine.Changed = [this] { ShowState(); };
    m_cmdClosePopup.Click = [this] { ClosePopup(); };
    m_cmdStart.Click = [this] { m_engine.Start(); };
    m_cmdStop.Click = [this] { m_engine.Stop(); };
    m_cmdPause.Click = [this] { m_engine.Pause(); };
}

void EngineWindow::Open() {
    if (Hwnd() == nullptr) Create(nullptr);
    ShowWindow(Hwnd(), SW_SHOWNORMAL);
    SetForegroundWindow(Hwnd());
}

bool EngineWindow::OnInit() {
    ServerProcess::Lock();
    m_txtAddress.Text(kFirstAddress);
    ShowState();
    return true;
}

bool EngineWindow::OnMessage(UINT message, WPARAM wParam, LPARAM, LRESULT&) {
    switch (message) {
        case WM_COMMAND:
            if (LOWORD(wParam) != IDCANCEL) return false;
            Destroy();
            return true;
        case WM_DESTROY:
            ServerProcess::Unlock();
            return true;
        default:
            return false;
    }
}

void EngineWindow::ShowState() {
    m_lblState.Caption(StateText(m_engine.State()));
}

void EngineWindow::ClosePopup() {
    // The window that the engine closed is gone: its handle means nothing to anybody.
    if (!ResumeNext([&] { m_engine.ClosePopup(0, m_txtAddress.Text()); })) {
        MessageBoxW(Hwnd(), (L"The log cannot be written:\n" + m_engine.logFile).c_str(), kTitle,
                    MB_OK | MB_ICONWARNING);
    }
}
