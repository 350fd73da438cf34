#include "options/general_options.h"

#include <utility>

#include "store/settings_schema.h"
#include "store/stored_value.h"

GeneralOptions::GeneralOptions(SettingsControls& controls, const std::wstring& strLoaderPath,
                               Event markChanged)
    : m_optStartup(controls.optStartup),
      m_modes{{Schema::kStartupMode, controls.optStartup},
              {Schema::kRunOnlyMode, controls.optLoadWithKiller},
              {Schema::kManualMode, controls.optLoadFromMenu}},
      m_strLoaderPath(strLoaderPath),
      m_markChanged(std::move(markChanged)) {
    controls.optStartup.Click = [this] { optStartup_Click(); };
    controls.optLoadWithKiller.Click = [this] { optLoadWithKiller_Click(); };
    controls.optLoadFromMenu.Click = [this] { optLoadFromMenu_Click(); };
    controls.cboPauseKey.Change = [this] { cboPauseKey_Change(); };
    controls.cboPauseKey.Click = [this] { cboPauseKey_Click(); };
    controls.udbSpeed.Change = [this] { udbSpeed_Change(); };
    controls.udbPause.Change = [this] { udbPause_Change(); };
}

// Modes are compared with regard to case, unlike what Windows compares.
void GeneralOptions::ReadStartupMode(Registry& registry) {
    const std::wstring stored =
        ReadText(registry, Schema::kSettingsKey, Schema::kStartup, Schema::kManualMode);
    for (const auto& [name, button] : m_modes) {
        if (stored != name) continue;
        m_strStartupMode = name;
        for (const Mode& mode : m_modes)
            mode.button.Value(&mode.button == &button);
    }
}

// Failures are ignored: a user who may not write the Run value is not told, and a later save finds the mode
// unchanged.
void GeneralOptions::WriteStartupMode(Registry& registry) {
    for (const auto& [name, button] : m_modes) {
        if (!button.Value()) continue;
        if (m_strStartupMode == name) return;
        WriteValue(registry, Schema::kSettingsKey, Schema::kStartup, name);
        if (&button == &m_optStartup) {
            registry.Save(HKEY_LOCAL_MACHINE, Schema::kRunKey, L"", Schema::kRunValue, m_strLoaderPath,
                          Schema::kTextType);
        } else if (m_strStartupMode == Schema::kStartupMode) {
            registry.Delete(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue);
        }
        m_strStartupMode = name;
        return;
    }
}

void GeneralOptions::optStartup_Click() {
    m_markChanged();
}

void GeneralOptions::optLoadWithKiller_Click() {
    m_markChanged();
}

void GeneralOptions::optLoadFromMenu_Click() {
    m_markChanged();
}

void GeneralOptions::cboPauseKey_Change() {
    m_markChanged();
}

void GeneralOptions::cboPauseKey_Click() {
    m_markChanged();
}

void GeneralOptions::udbSpeed_Change() {
    m_markChanged();
}

void GeneralOptions::udbPause_Change() {
    m_markChanged();
}
