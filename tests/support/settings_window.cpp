#include "tests/support/settings_window.h"

#include "platform/automation_error.h"
#include "store/settings_schema.h"

SettingsWindow::SettingsWindow()
    : controls{&cmdOK,           &cmdApply,      &cmdCancel,     &optStartup,   &optLoadWithKiller,
               &optLoadFromMenu, &chkPlaySound,  &cmdSoundFile,  &cmdTestSound, &chkBeep,
               &cboPauseKey,     &txtSpeed,      &udbSpeed,      &txtPause,     &udbPause,
               &lstExclude,      &lstClosedWnd,  &cmdRefreshLog, &cmdAddTo,     &cmdClearList,
               &lvwBanners,      &lvwSearchURLs, &lblNavSite,    &imgLogo,      &chkExtra,
               &txtExtra,        &lstExtra,      &lvwExtra},
      window(controls),
      logFile([]() -> std::wstring { RaiseError(ErrorNumber::ObjectNotSet); }) {
    for (const wchar_t* const key : {L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"}) {
        cboPauseKey.AddItem(key);
    }
    for (const wchar_t* const heading : {L"Name", L"Width", L"Height"})
        lvwBanners.AddColumn(heading);
    for (const wchar_t* const heading : {L"Engine Name", L"Engine URL"})
        lvwSearchURLs.AddColumn(heading);
    txtSpeed.Text(L"6");
    txtPause.Text(L"5");
    txtPause.MaxLength(3);
    cmdApply.Enabled(false);
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

std::vector<std::wstring> SettingsWindow::ExcludeRows() const {
    std::vector<std::wstring> rows;
    for (int row = 0; row < lstExclude.ListCount(); ++row)
        rows.push_back(lstExclude.List(row));
    return rows;
}

std::vector<std::wstring> SettingsWindow::Rows(const ListView& list, int subItems) {
    std::vector<std::wstring> rows;
    for (int position = 1; position <= list.Count(); ++position) {
        std::wstring row = list.Text(position);
        for (int subItem = 1; subItem <= subItems; ++subItem)
            row += L'|' + list.SubItem(position, subItem);
        row += list.Checked(position) ? L"|x" : L"|";
        rows.push_back(row);
    }
    return rows;
}

void SettingsWindow::Reload() {
    events.push_back("reload");
    if (onReload) onReload();
}

void SettingsWindow::Hide() {
    events.push_back("hide");
    if (onHide) onHide();
}
