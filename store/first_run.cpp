#include "store/first_run.h"

#include "platform/automation_error.h"
#include "store/registry.h"
#include "store/server_directory.h"
#include "store/settings_schema.h"

namespace {

// A value that the store refuses is passed over: where nothing can be written the mark stays missing as well,
// and the next start tries again.
void SaveDefault(const Registry& registry, const wchar_t* key, const std::wstring& name,
                 const Variant& value) {
    registry.Save(HKEY_CURRENT_USER, key, L"", name, value, Schema::kTextType);
}

void SaveSetting(const Registry& registry, const Schema::Setting& setting) {
    const std::wstring directory = setting.isInServerDirectory ? ServerDirectory() : std::wstring();
    SaveDefault(registry, Schema::kSettingsKey, setting.name, directory + setting.text);
}

// The mark counts by its presence: one that holds half a number is there, although reading it raises an
// error.
bool IsMarked(const Registry& registry) {
    try {
        Variant firstTime(L"");
        long type = 0;
        std::wstring keyClass;
        return registry.Read(HKEY_CURRENT_USER, Schema::kSettingsKey, Schema::kFirstTime, firstTime, type,
                             keyClass);
    } catch (const AutomationError&) {
        return true;
    }
}

void WriteDefaults(const Registry& registry) {
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        SaveSetting(registry, setting);

    long n = 0;
    for (const Schema::BannerSize& banner : Schema::kBannerDefaults) {
        ++n;
        SaveDefault(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kName), banner.name);
        SaveDefault(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kWidth), banner.width);
        SaveDefault(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kHeight), banner.height);
        SaveDefault(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kUse), banner.use);
    }

    n = 0;
    for (const Schema::SearchEngine& engine : Schema::kSearchDefaults) {
        ++n;
        SaveDefault(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kName), engine.name);
        SaveDefault(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kUrl), engine.url);
        SaveDefault(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kUse), engine.use);
    }

    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        SaveSetting(registry, setting);
}

}  // namespace

void WriteFirstRunDefaults() {
    const Registry registry;
    if (!IsMarked(registry)) WriteDefaults(registry);
}
