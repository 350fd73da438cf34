// The general options on the Settings page: how the manager is started, the speed and pause controls, and the
// pause key.
#pragma once

#include <string>

#include "options/settings_controls.h"
#include "store/registry.h"

class GeneralOptions {
public:
    // strLoaderPath is read when the Run value is written; it and the controls outlive this object.
    // markChanged: notes an unsaved change, unless settings are being loaded.
    GeneralOptions(SettingsControls& controls, const std::wstring& strLoaderPath, Event markChanged);
    GeneralOptions(const GeneralOptions&) = delete;
    GeneralOptions& operator=(const GeneralOptions&) = delete;

    // Selects the button of the stored mode and remembers the mode. A missing one counts as Manual, one that
    // is not known changes nothing.
    void ReadStartupMode(Registry& registry);

    // Stores the selected mode, and writes or deletes the Run value, when it is not the remembered one; then
    // remembers it, even where the user may not write the Run value.
    void WriteStartupMode(Registry& registry);

    void optStartup_Click();
    void optLoadWithKiller_Click();
    void optLoadFromMenu_Click();
    void cboPauseKey_Change();
    void cboPauseKey_Click();
    void udbSpeed_Change();
    void udbPause_Change();

    // As last read or written: "Startup", "RunOnly" or "Manual"; empty before the first.
    std::wstring m_strStartupMode;

private:
    struct Mode {
        const wchar_t* name;
        OptionButton& button;
    };

    OptionButton& m_optStartup;
    const Mode m_modes[3];
    const std::wstring& m_strLoaderPath;
    const Event m_markChanged;
};
