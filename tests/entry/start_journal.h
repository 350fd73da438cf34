// Writes down, in order, what the manager does with the outside while it starts.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/resource.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/inside.h"
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

    StartJournal() {
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
    StartJournal(const StartJournal&) = delete;
    StartJournal& operator=(const StartJournal&) = delete;

    // The engine goes with the journal: the window takes leave of it before.
    ~StartJournal() {
        if (g_frmConfig != nullptr) g_frmConfig->Unload();
        s_active = nullptr;
    }

    // The number of the first or last entry with this text; -1 where there is none.
    int First(const std::string& text) const {
        const auto found = std::ranges::find(entries, text, &Entry::text);
        return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
    }
    int Last(const std::string& text) const {
        const auto found = std::find_if(entries.rbegin(), entries.rend(),
                                        [&](const Entry& entry) { return entry.text == text; });
        return static_cast<int>(entries.rend() - found) - 1;
    }
    int Count(const std::string& text) const {
        return static_cast<int>(std::ranges::count(entries, text, &Entry::text));
    }

    static void Note(const std::string& text) {
        auto& entries = s_active->entries;
        if (text.starts_with("read:") && !entries.empty() && entries.back().text == text) return;
        entries.push_back({text, g_lngConfigHwnd, g_strLoaderPath});
    }

    std::vector<Entry> entries;
    std::vector<IconCall> iconCalls;
    FakeEngine engine;
    RegistryCalls store{RegistryCalls::Of::Memory};  // the user's settings, none at first

private:
    static HWND WINAPI MakeDialog(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
                                  LPARAM parameter) {
        Note(resource == MAKEINTRESOURCEW(IDD_CONFIG) ? "window" : "page");
        return s_active->m_makeDialog.Original<decltype(&CreateDialogParamW)>()(instance, resource, parent,
                                                                                procedure, parameter);
    }

    // The taskbar of the screen is left alone.
    static BOOL WINAPI Notify(DWORD message, PNOTIFYICONDATAA data) {
        if (s_active == nullptr) return TRUE;
        Note("icon:" + std::to_string(message));
        s_active->iconCalls.push_back({message,
                                       std::string(reinterpret_cast<const char*>(data), data->cbSize),
                                       GetPropA(data->hWnd, "OldWndProc") != nullptr});
        return TRUE;
    }

    static inline StartJournal* s_active = nullptr;
    const ImportPatch m_makeDialog{"user32.dll", "CreateDialogParamW", &MakeDialog};
    const ImportPatch m_notify{"shell32.dll", "Shell_NotifyIconA", &Notify};
};

struct Journalled : Inside {
    // Runs work in the next call of the engine's member.
    void LetIn(const char* member, const std::function<void()>& work) {
        journal.engine.script.within[member] = [work, isFirst = true]() mutable {
            if (std::exchange(isFirst, false)) work();
        };
    }

    StartJournal journal;
};
