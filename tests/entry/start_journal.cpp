#include "tests/entry/start_journal.h"

#include <algorithm>

#include "app/config_globals.h"
#include "app/frm_config.h"
#include "app/resource.h"
#include "tray/bas_shell_notify.h"

StartJournal::StartJournal() {
    s_active = this;
    for (const char* const member :
         {"CreateInstance", "CreatePopup", "Advise", "State", "LogFile", "Popup gone", "ReleasePopup"}) {
        engine.script.within[member] = [member] { Note(std::string("engine:") + member); };
    }
    store.beforeCall = [](RegistryFunction function, const std::string& name) {
        if (function == RegistryFunction::Open) Note("open:" + name);
        if (function == RegistryFunction::Query) Note("read:" + name);
        if (function == RegistryFunction::Set) Note("write:" + name);
    };
}

// The engine goes with the journal: the window takes leave of it before.
StartJournal::~StartJournal() {
    if (g_frmConfig != nullptr) g_frmConfig->Unload();
    s_active = nullptr;
}

void StartJournal::Note(const std::string& text) {
    auto& entries = s_active->entries;
    if (text.starts_with("read:") && !entries.empty() && entries.back().text == text) return;
    entries.push_back({text, g_lngConfigHwnd, g_strLoaderPath});
}

int StartJournal::First(const std::string& text) const {
    const auto found = std::ranges::find(entries, text, &Entry::text);
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

int StartJournal::Last(const std::string& text) const {
    const auto found = std::find_if(entries.rbegin(), entries.rend(),
                                    [&](const Entry& entry) { return entry.text == text; });
    return static_cast<int>(entries.rend() - found) - 1;
}

int StartJournal::Count(const std::string& text) const {
    return static_cast<int>(std::ranges::count(entries, text, &Entry::text));
}

HWND WINAPI StartJournal::MakeDialog(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
                                     LPARAM parameter) {
    Note(resource == MAKEINTRESOURCEW(IDD_CONFIG) ? "window" : "page");
    const auto original = s_active->m_makeDialog.Original<decltype(&CreateDialogParamW)>();
    return original(instance, resource, parent, procedure, parameter);
}

// The taskbar of the screen is left alone.
BOOL WINAPI StartJournal::Notify(DWORD message, PNOTIFYICONDATAA data) {
    if (s_active == nullptr) return TRUE;
    Note("icon:" + std::to_string(message));
    s_active->iconCalls.push_back({message, std::string(reinterpret_cast<const char*>(data), data->cbSize),
                                   GetPropA(data->hWnd, "OldWndProc") != nullptr});
    return TRUE;
}
