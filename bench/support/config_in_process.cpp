#include "bench/support/config_in_process.h"

#include <commctrl.h>

ConfigInProcess::ConfigInProcess() {
    const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_STANDARD_CLASSES | ICC_LINK_CLASS |
                                                            ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES |
                                                            ICC_UPDOWN_CLASS};
    InitCommonControlsEx(&classes);
}

void ConfigInProcess::Make() {
    m_form = MakeObject<frmConfig>();
    m_form->Initialise();
    m_window = static_cast<HWND>(LongToHandle(m_form->Handle()));
}

void ConfigInProcess::Unmake() {
    if (m_form != nullptr) m_form->Unload();
    m_form.Reset();
    m_window = nullptr;
}

void Settle(HWND window) {
    MSG message;
    do {
        RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    } while (GetUpdateRect(window, nullptr, FALSE) != FALSE);
}
