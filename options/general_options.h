// The general options: how the manager is started, the speed and pause controls, the pause key, and the link
// to the maker's site.
#pragma once

#include <string>

#include "platform/controls/combo_box.h"
#include "platform/controls/image_box.h"
#include "platform/controls/link_label.h"
#include "platform/controls/option_button.h"
#include "platform/controls/up_down.h"
#include "store/registry.h"

class GeneralOptions {
public:
    // strLoaderPath is read when the Run value is written, and must live as long as this.
    GeneralOptions(OptionButton& optStartup, OptionButton& optLoadWithKiller, OptionButton& optLoadFromMenu,
                   ComboBox& cboPauseKey, UpDown& udbSpeed, UpDown& udbPause, LinkLabel& lblNavSite,
                   ImageBox& imgLogo, const std::wstring& strLoaderPath, Event markChanged);
    GeneralOptions(const GeneralOptions&) = delete;
    GeneralOptions& operator=(const GeneralOptions&) = delete;

    // Selects the button of the stored mode and remembers the mode. A missing one counts as Manual, one that
    // is not known changes nothing.
    void ReadStartupMode(Registry& registry);

    // Stores the selected mode, and writes or deletes the Run value, when it is not the remembered one; then
    // remembers it, even where the user may not write the Run value.
    void WriteStartupMode(Registry& registry);

    // Opens an address in the browser. What becomes of it is not known.
    void OpenAddress(const std::wstring& address);

    void optStartup_Click();
    void optLoadWithKiller_Click();
    void optLoadFromMenu_Click();
    void cboPauseKey_Change();
    void cboPauseKey_Click();
    void udbSpeed_Change();
    void udbPause_Change();
    void lblNavSite_Click();
    void imgLogo_Click();

    // As last read or written: "Startup", "RunOnly" or "Manual"; empty before the first.
    std::wstring m_strStartupMode;

private:
    struct Mode {
        const wchar_t* name;
        OptionButton& button;
    };

    OptionButton& m_optStartup;
    const Mode m_modes[3];
    LinkLabel& m_lblNavSite;
    const std::wstring& m_strLoaderPath;
    const Event m_markChanged;
};
