// Writes down, in order, what the manager does with the outside while it starts.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "tests/engine_control/fake_engine.h"
#include "tests/support/import_patch.h"
#include "tests/support/registry_calls.h"

// One at a time. Entries: "window" (the configuration window is made), "page" (one of its pages), "engine:"
// and a member of the engine, "icon:" and the number that the shell is asked with (0 adds, 2 removes),
// "open:" and a key of the store, "read:" and "write:" and a value. Two reads of the same value in a row are
// one entry.
class StartJournal {
public:
    struct Entry {
        std::string text;
        LONG configHwnd;          // g_lngConfigHwnd at that moment
        std::wstring loaderPath;  // g_strLoaderPath likewise
    };

    // A call to the shell about the icon.
    struct IconCall {
        DWORD action;
        std::string record;  // as many bytes as cbSize says
        bool isHooked;       // whether the icon's window was hooked by then
    };

    StartJournal();
    StartJournal(const StartJournal&) = delete;
    StartJournal& operator=(const StartJournal&) = delete;
    ~StartJournal();

    // The number of the first or last entry with this text; -1 where there is none.
    int First(const std::string& text) const;
    int Last(const std::string& text) const;
    int Count(const std::string& text) const;

    static void Note(const std::string& text);

    std::vector<Entry> entries;
    std::vector<IconCall> iconCalls;
    FakeEngine engine;
    RegistryCalls store{RegistryCalls::Of::Memory};  // the user's settings, none at first

private:
    static HWND WINAPI MakeDialog(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
                                  LPARAM parameter);
    static BOOL WINAPI Notify(DWORD message, PNOTIFYICONDATAA data);

    static inline StartJournal* s_active = nullptr;
    const ImportPatch m_makeDialog{"user32.dll", "CreateDialogParamW", &MakeDialog};
    const ImportPatch m_notify{"shell32.dll", "Shell_NotifyIconA", &Notify};
};
