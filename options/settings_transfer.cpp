#include "options/settings_transfer.h"

#include <utility>

#include "options/settings_loader.h"
#include "options/settings_saver.h"
#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "store/stored_value.h"

namespace {

// True for the life of this object, however the load ends. A load may come in while another one waits for the
// engine: its end is not that of the other.
class LoadingFlag {
public:
    explicit LoadingFlag(bool& flag) noexcept : m_flag(flag), m_before(std::exchange(flag, true)) {}
    LoadingFlag(const LoadingFlag&) = delete;
    LoadingFlag& operator=(const LoadingFlag&) = delete;
    ~LoadingFlag() { m_flag = m_before; }

private:
    bool& m_flag;
    const bool m_before;
};

}  // namespace

void SettingsTransfer::LoadSettings() {
    Registry registry;
    const LoadingFlag loading(m_changeMark.m_bLoading);
    ResumeNext([&] {
        SettingsLoader loader(registry);
        for (Control* const control : m_controls)
            loader.Load(*control);
    });
    ResumeNext([&] { m_closedLog.ReadClosedLog(); });
    ResumeNext([&] { m_generalOptions.ReadStartupMode(registry); });
    // A stored key that is none of the items leaves the choice as it was.
    ResumeNext([&] {
        m_cboPauseKey.Text(
            ReadText(registry, Schema::kSettingsKey, Schema::kPauseKey, Schema::kDefaultPauseKey));
    });
    ResumeNext([&] {
        m_popupNotice.m_strSoundFile = ReadText(registry, Schema::kSettingsKey, Schema::kSoundFile, L"");
    });
    ResumeNext([&] { m_popupNotice.chkPlaySound_Click(); });
}

void SettingsTransfer::SaveSettings() {
    Registry registry;
    SettingsSaver saver(registry);
    for (Control* const control : m_controls)
        saver.Save(*control);
    ResumeNext([&] {
        WriteValue(registry, Schema::kSettingsKey, Schema::kSoundFile, m_popupNotice.m_strSoundFile);
    });
    ResumeNext([&] { WriteValue(registry, Schema::kSettingsKey, Schema::kPauseKey, m_cboPauseKey.Text()); });
    ResumeNext([&] { m_generalOptions.WriteStartupMode(registry); });
    ResumeNext([&] { m_popupNotice.chkPlaySound_Click(); });
}
