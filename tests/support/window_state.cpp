#include "tests/support/window_state.h"

#include "platform/text.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"

namespace {

std::vector<ListRow> RowsOf(const ListView& list, int fields) {
    std::vector<ListRow> rows;
    for (int position = 1; position <= list.Count(); ++position) {
        ListRow row{list.Text(position), {}, list.Checked(position)};
        for (int field = 1; field <= fields; ++field)
            row.fields.push_back(list.SubItem(position, field));
        rows.push_back(row);
    }
    return rows;
}

void PutRows(ListView& list, const std::vector<ListRow>& rows) {
    const RedrawPause pause(list);
    list.Clear();
    for (const ListRow& row : rows) {
        const int position = list.Add(list.Count() + 1, row.name);
        for (size_t field = 0; field < row.fields.size(); ++field)
            list.SubItem(position, static_cast<int>(field) + 1, row.fields[field]);
        list.Checked(position, row.isUsed);
    }
}

std::string Shown(const std::wstring& text) {
    return '"' + ToAnsi(text.size() > 60 ? text.substr(0, 60) + L"..." : text) + '"';
}

std::string Shown(const std::vector<ListRow>& rows) {
    std::string text;
    for (const ListRow& row : rows) {
        text += Shown(row.name);
        for (const std::wstring& field : row.fields)
            text += '|' + Shown(field);
        text += row.isUsed ? "|x  " : "|  ";
    }
    return text;
}

std::string Shown(const std::vector<std::wstring>& rows) {
    std::string text;
    for (const std::wstring& row : rows)
        text += Shown(row) + ' ';
    return text;
}

std::string Shown(int number) {
    return std::to_string(number);
}

}  // namespace

WindowState StateOf(const SettingsWindow& window) {
    WindowState state;
    state.playSound = window.chkPlaySound.Value();
    state.beep = window.chkBeep.Value();
    state.extra = window.chkExtra.Value();
    state.speed = window.txtSpeed.Text();
    state.pause = window.txtPause.Text();
    state.extraText = window.txtExtra.Text();
    state.exclude = ListBoxRows(window.lstExclude.Hwnd());
    state.banners = RowsOf(window.lvwBanners, 2);
    state.search = RowsOf(window.lvwSearchURLs, 1);
    state.pauseKey = window.cboPauseKey.Text();
    state.soundFile = window.popupNotice.m_strSoundFile;
    if (window.optStartup.Value()) state.selectedMode += L"Startup";
    if (window.optLoadWithKiller.Value()) state.selectedMode += L"RunOnly";
    if (window.optLoadFromMenu.Value()) state.selectedMode += L"Manual";
    state.mode = window.generalOptions.m_strStartupMode;
    state.canChooseSound = window.cmdSoundFile.Enabled();
    state.canTestSound = window.cmdTestSound.Enabled();
    state.canApply = window.cmdApply.Enabled();
    state.isLoading = window.changeMark.m_bLoading;
    return state;
}

void Put(SettingsWindow& window, const WindowState& state) {
    SettingsWindow::Check(window.chkPlaySound, state.playSound == 1);
    SettingsWindow::Check(window.chkBeep, state.beep == 1);
    SettingsWindow::Check(window.chkExtra, state.extra == 1);
    window.txtSpeed.Text(state.speed);
    window.txtPause.Text(state.pause);
    window.txtExtra.Text(state.extraText);
    {
        const RedrawPause pause(window.lstExclude);
        window.lstExclude.Clear();
        for (const std::wstring& row : state.exclude)
            window.lstExclude.AddItem(row);
    }
    PutRows(window.lvwBanners, state.banners);
    PutRows(window.lvwSearchURLs, state.search);
    SendMessageW(window.cboPauseKey.Hwnd(), CB_SELECTSTRING, static_cast<WPARAM>(-1),
                 reinterpret_cast<LPARAM>(state.pauseKey.c_str()));
    if (state.pauseKey.empty())
        SendMessageW(window.cboPauseKey.Hwnd(), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    window.popupNotice.m_strSoundFile = state.soundFile;
    SettingsWindow::Check(window.optStartup, state.selectedMode == L"Startup");
    SettingsWindow::Check(window.optLoadWithKiller, state.selectedMode == L"RunOnly");
    SettingsWindow::Check(window.optLoadFromMenu, state.selectedMode == L"Manual");
    window.generalOptions.m_strStartupMode = state.mode;
    window.cmdSoundFile.Enabled(state.canChooseSound);
    window.cmdTestSound.Enabled(state.canTestSound);
    window.cmdApply.Enabled(state.canApply);
}

std::string Difference(const WindowState& actual, const WindowState& expected) {
    std::string text;
    const auto compare = [&](const char* name, const auto& left, const auto& right) {
        if (!(left == right)) text += std::string(name) + ": " + Shown(left) + ", not " + Shown(right) + "; ";
    };
    compare("playSound", actual.playSound, expected.playSound);
    compare("beep", actual.beep, expected.beep);
    compare("extra", actual.extra, expected.extra);
    compare("speed", actual.speed, expected.speed);
    compare("pause", actual.pause, expected.pause);
    compare("extraText", actual.extraText, expected.extraText);
    compare("exclude", actual.exclude, expected.exclude);
    compare("banners", actual.banners, expected.banners);
    compare("search", actual.search, expected.search);
    compare("pauseKey", actual.pauseKey, expected.pauseKey);
    compare("soundFile", actual.soundFile, expected.soundFile);
    compare("selectedMode", actual.selectedMode, expected.selectedMode);
    compare("mode", actual.mode, expected.mode);
    compare("canChooseSound", actual.canChooseSound, expected.canChooseSound);
    compare("canTestSound", actual.canTestSound, expected.canTestSound);
    compare("canApply", actual.canApply, expected.canApply);
    compare("isLoading", actual.isLoading, expected.isLoading);
    return text;
}

std::string Difference(const RegistryContents& actual, const RegistryContents& expected) {
    if (actual == expected) return {};
    std::string text;
    for (const auto& [key, values] : expected) {
        const auto found = actual.find(key);
        if (found == actual.end()) {
            text += key + " is missing; ";
            continue;
        }
        for (const auto& [name, value] : values) {
            const auto stored = found->second.find(name);
            if (stored == found->second.end()) {
                text += name + " is missing; ";
            } else if (!(stored->second == value)) {
                text += name + " is " + stored->second.bytes + ", not " + value.bytes + "; ";
            }
        }
        for (const auto& [name, value] : found->second) {
            if (!values.contains(name)) text += name + " is there; ";
        }
    }
    for (const auto& [key, values] : actual) {
        if (!expected.contains(key)) text += key + " is there; ";
    }
    return text;
}
