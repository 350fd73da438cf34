// The OK, Apply and Cancel buttons.
#pragma once

#include "options/settings_transfer.h"
#include "platform/controls/button.h"

class Commands {
public:
    // reloadSettings: tells the engine to read the store again; a failure of it is ignored. hide: hides the
    // window, which stays loaded.
    Commands(Button& cmdOK, Button& cmdApply, Button& cmdCancel, SettingsTransfer& transfer,
             Event reloadSettings, Event hide);
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    void cmdOK_Click();
    void cmdApply_Click();
    void cmdCancel_Click();

private:
    Button& m_cmdApply;
    SettingsTransfer& m_transfer;
    const Event m_reloadSettings;
    const Event m_hide;
};
