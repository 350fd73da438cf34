#include "store/first_run.h"

#include "platform/automation_error.h"
#include "store/registry.h"
#include "store/server_directory.h"
#include "store/settings_schema.h"
#include "store/stored_value.h"

namespace {

void SaveSetting(const Registry& registry, const Schema::Setting& setting) {
    const std::wstring directory = setting.isInServerDirectory ? ServerDirectory() : std::wstring();
    WriteValue(registry, Schema::kSettingsKey, setting.name, directory + setting.text);
}

// Only the presence of the mark counts. One that is too short for its type is there, although reading it
// raises an error.
bool IsMarked(const Registry& registry) {
    try {
        Variant firstTime;
        return ReadValue(registry, Schema::kSettingsKey, Schema::kFirstTime, firstTime);
    } catch (const AutomationError&) {
        return true;
    }
}

// Where the store refuses values the mark stays missing as well, and the next start tries again.
void WriteDefaults(const Registry& registry) {
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        SaveSetting(registry, setting);

    long n = 0;
    for (const Schema::BannerSize& banner : Schema::kBannerDefaults) {
        ++n;
        WriteValue(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kName), banner.name);
        WriteValue(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kWidth), banner.width);
        WriteValue(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kHeight), banner.height);
        WriteValue(registry, Schema::kBannersKey, Schema::Numbered(n, Schema::kUse), banner.use);
    }

    n = 0;
    for (const Schema::SearchEngine& engine : Schema::kSearchDefaults) {
        ++n;
        WriteValue(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kName), engine.name);
        WriteValue(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kUrl), engine.url);
        WriteValue(registry, Schema::kSearchKey, Schema::Numbered(n, Schema::kUse), engine.use);
    }

    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        SaveSetting(registry, setting);
}

}  // namespace

void WriteFirstRunDefaults() {
    const Registry registry;
    if (!IsMarked(registry)) WriteDefaults(registry);
}
