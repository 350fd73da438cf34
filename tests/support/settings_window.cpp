#include "tests/support/settings_window.h"

#include "platform/automation_error.h"
#include "store/settings_schema.h"

SettingsWindow::SettingsWindow()
    : controls(Join({CommandControls::all, SettingsControls::all, ExcludeControls::all, LogControls::all,
                     BannerControls::all, SearchControls::all, AboutControls::all, extra})),
      window(controls),
      logFile([]() -> std::wstring { RaiseError(ErrorNumber::ObjectNotSet); }) {
    // The link and the logo stay empty: what they show is the tests' to say.
    SettingsControls::SetUp();
    BannerControls::SetUp();
    SearchControls::SetUp();
    cmdApply.Enabled(false);
}

void SettingsWindow::Write(const wchar_t* key, Values values) const {
    for (const auto& [name, text] : values)
        user.Write(key, name, text);
}

void SettingsWindow::Store(const std::wstring& value, const std::wstring& text) const {
    user.Write(Schema::kSettingsKey, value, text);
}

std::wstring SettingsWindow::Stored(const std::wstring& value) const {
    return user.Text(Schema::kSettingsKey, value);
}

bool SettingsWindow::HasStored(const std::wstring& value) const {
    return user.Exists(Schema::kSettingsKey, value);
}

void SettingsWindow::Reload(const Event& done) {
    events.push_back("reload");
    if (onReload) onReload();
    done();
}

void SettingsWindow::Hide() {
    events.push_back("hide");
    if (onHide) onHide();
}
