#include "tests/entry/start_journal.h"

#include "app/config_globals.h"
#include "app/frm_config.h"
#include "app/resource.h"
#include "tray/bas_shell_notify.h"

StartJournal* StartJournal::s_active = nullptr;

StartJournal::StartJournal()
    : m_makeDialog("user32.dll", "CreateDialogParamW", &MakeDialog),
      m_notify("shell32.dll", "Shell_NotifyIconA", &Notify),
      m_open("advapi32.dll", "RegOpenKeyExA", &Open),
      m_query("advapi32.dll", "RegQueryValueExA", &Query),
      m_set("advapi32.dll", "RegSetValueExA", &Set) {
    s_active = this;
    for (const char* const member :
         {"CreateInstance", "CreatePopup", "Advise", "State", "LogFile", "Popup gone", "ReleasePopup"}) {
        engine.script.within[member] = [member] { Note(std::string("engine:") + member); };
    }
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
    for (size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].text == text) return static_cast<int>(i);
    }
    return -1;
}

int StartJournal::Last(const std::string& text) const {
    for (size_t i = entries.size(); i-- > 0;) {
        if (entries[i].text == text) return static_cast<int>(i);
    }
    return -1;
}

int StartJournal::Count(const std::string& text) const {
    int count = 0;
    for (const Entry& entry : entries)
        count += entry.text == text ? 1 : 0;
    return count;
}

HWND WINAPI StartJournal::MakeDialog(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
                                     LPARAM parameter) {
    Note(resource == MAKEINTRESOURCEW(IDD_CONFIG) ? "window" : "page");
    const auto original = s_active->m_makeDialog.Original<decltype(&CreateDialogParamW)>();
    return original(instance, resource, parent, procedure, parameter);
}

BOOL WINAPI StartJournal::Notify(DWORD message, PNOTIFYICONDATAA data) {
    if (s_active == nullptr) return TRUE;
    Note("icon:" + std::to_string(message));
    s_active->iconCalls.push_back({message, std::string(reinterpret_cast<const char*>(data), data->cbSize),
                                   GetPropA(data->hWnd, "OldWndProc") != nullptr});
    return TRUE;
}

LONG WINAPI StartJournal::Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    Note(std::string("open:") + path);
    return s_active->m_open.Original<decltype(&RegOpenKeyExA)>()(root, path, options, access, key);
}

LONG WINAPI StartJournal::Query(HKEY key, LPCSTR value, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                LPDWORD size) {
    Note(std::string("read:") + value);
    return s_active->m_query.Original<decltype(&RegQueryValueExA)>()(key, value, reserved, type, data, size);
}

LONG WINAPI StartJournal::Set(HKEY key, LPCSTR value, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
    Note(std::string("write:") + value);
    return s_active->m_set.Original<decltype(&RegSetValueExA)>()(key, value, reserved, type, data, size);
}
