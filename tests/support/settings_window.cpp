#include "tests/support/settings_window.h"

#include "platform/automation_error.h"

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

void SettingsWindow::Reload(const Event& done) {
    events.push_back("reload");
    if (onReload) onReload();
    done();
}

void SettingsWindow::Hide() {
    events.push_back("hide");
    if (onHide) onHide();
}
