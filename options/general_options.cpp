#include "options/general_options.h"

#include <shellapi.h>

#include <utility>

#include "platform/text.h"
#include "store/settings_schema.h"

namespace {

void SaveText(Registry& registry, HKEY hKey, const wchar_t* key, const wchar_t* name,
              const std::wstring& text) {
    registry.Save(hKey, key, L"", name, text, Schema::kTextType);
}

}  // namespace

GeneralOptions::GeneralOptions(OptionButton& optStartup, OptionButton& optLoadWithKiller,
                               OptionButton& optLoadFromMenu, ComboBox& cboPauseKey, UpDown& udbSpeed,
                               UpDown& udbPause, LinkLabel& lblNavSite, ImageBox& imgLogo,
                               const std::wstring& strLoaderPath, Event markChanged)
    : m_optStartup(optStartup),
      m_modes{{Schema::kStartupMode, optStartup},
              {Schema::kRunOnlyMode, optLoadWithKiller},
              {Schema::kManualMode, optLoadFromMenu}},
      m_lblNavSite(lblNavSite),
      m_strLoaderPath(strLoaderPath),
      m_markChanged(std::move(markChanged)) {
    optStartup.Click = [this] { optStartup_Click(); };
    optLoadWithKiller.Click = [this] { optLoadWithKiller_Click(); };
    optLoadFromMenu.Click = [this] { optLoadFromMenu_Click(); };
    cboPauseKey.Change = [this] { cboPauseKey_Change(); };
    cboPauseKey.Click = [this] { cboPauseKey_Click(); };
    udbSpeed.Change = [this] { udbSpeed_Change(); };
    udbPause.Change = [this] { udbPause_Change(); };
    lblNavSite.Click = [this] { lblNavSite_Click(); };
    imgLogo.Click = [this] { imgLogo_Click(); };
}

// Modes are compared with regard to case, unlike what Windows compares.
void GeneralOptions::ReadStartupMode(Registry& registry) {
    Variant sValue(L"");
    long sValueType = 0;
    std::wstring sClass;
    if (!registry.Read(HKEY_CURRENT_USER, Schema::kSettingsKey, Schema::kStartup, sValue, sValueType,
                       sClass)) {
        sValue = Schema::kManualMode;
    }
    const std::wstring stored = ToText(sValue);
    for (const auto& [name, button] : m_modes) {
        if (stored != name) continue;
        m_strStartupMode = name;
        for (const Mode& mode : m_modes)
            mode.button.Value(&mode.button == &button);
    }
}

// Whether the store took it is not asked: a user who may not write the Run value is not told, and a later
// save finds the mode unchanged.
void GeneralOptions::WriteStartupMode(Registry& registry) {
    for (const auto& [name, button] : m_modes) {
        if (!button.Value()) continue;
        if (m_strStartupMode == name) return;
        SaveText(registry, HKEY_CURRENT_USER, Schema::kSettingsKey, Schema::kStartup, name);
        if (&button == &m_optStartup) {
            SaveText(registry, HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue, m_strLoaderPath);
        } else if (m_strStartupMode == Schema::kStartupMode) {
            registry.Delete(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue);
        }
        m_strStartupMode = name;
        return;
    }
}

void GeneralOptions::OpenAddress(const std::wstring& address) {
    ShellExecuteA(nullptr, "open", ToAnsi(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
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

void GeneralOptions::lblNavSite_Click() {
    OpenAddress(m_lblNavSite.Caption());
}

void GeneralOptions::imgLogo_Click() {
    OpenAddress(m_lblNavSite.Caption());
}
