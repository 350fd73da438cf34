// The OK, Apply and Cancel buttons.
#pragma once

#include <array>
#include <functional>
#include <optional>

#include "options/change_mark.h"
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
    // reloadSettings: tells the engine to read the store again, and runs done when the engine has done so or
    // could not be told. hide: hides the window, which stays loaded.
    Commands(CommandControls& controls, const ChangeMark& changeMark, SettingsTransfer& transfer,
             std::function<void(Event done)> reloadSettings, Event hide);
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    void cmdOK_Click();
    void cmdApply_Click();
    void cmdCancel_Click();

private:
    Button& m_cmdApply;
    const ChangeMark& m_changeMark;
    SettingsTransfer& m_transfer;
    const std::function<void(Event done)> m_reloadSettings;
    const Event m_hide;
    std::optional<Generation::Mark> m_lastApplied;
};
