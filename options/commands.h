// The OK, Apply and Cancel buttons.
#pragma once

#include <array>

#include "options/resource.h"
#include "options/settings_transfer.h"
#include "platform/controls/button.h"

struct CommandControls {
    Button cmdOK{L"cmdOK", IDC_CMDOK};
    Button cmdApply{L"cmdApply", IDC_CMDAPPLY};
    Button cmdCancel{L"cmdCancel", IDCANCEL};
    const std::array<Control*, 3> all{&cmdOK, &cmdApply, &cmdCancel};
};

class Commands {
public:
    // reloadSettings: tells the engine to read the store again; a failure of it is ignored. hide: hides the
    // window, which stays loaded.
    Commands(CommandControls& controls, SettingsTransfer& transfer, Event reloadSettings, Event hide);
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
