// The manager's configuration window in this process.
#pragma once

#include <windows.h>

#include "app/frm_config.h"
#include "platform/com/com_ptr.h"
#include "tests/support/test_hive.h"

// Over an empty store of its own, which its first window fills with the defaults. What it calls outside is
// real unless it is patched.
class ConfigInProcess {
public:
    ConfigInProcess();
    ConfigInProcess(const ConfigInProcess&) = delete;
    ConfigInProcess& operator=(const ConfigInProcess&) = delete;

    // Makes the window, hidden and loaded; takes it away again.
    void Make();
    void Unmake();

    frmConfig& Form() const { return *m_form.Get(); }
    HWND Window() const { return m_window; }

private:
    TestHive m_user{HKEY_CURRENT_USER};
    ComPtr<frmConfig> m_form;
    HWND m_window = nullptr;
};

// Draws whatever of the window and its children is not drawn, and handles the messages that have come.
void Settle(HWND window);
