// The manager with an engine, a shell and a store of the test's: what it does with them is noted in its
// order.
#pragma once

#include <windows.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/support/import_fake.h"
#include "tests/support/registry_calls.h"
#include "tests/tray_icon/shell_calls.h"

// Entries: "window" (the configuration window is made), "page" (one of its pages), "engine:" and a member of
// the engine, "icon:" and the number that the shell is asked with (0 adds, 2 removes), "open:" and a key of
// the store, "read:" and "write:" and a value. Two reads of the same value in a row are one entry.
struct Journalled : Inside {
    Journalled() {
        for (const char* const member :
             {"CreateInstance", "CreatePopup", "State", "LogFile", "Popup gone", "ReleasePopup"}) {
            engine.script.within[member] = [this, member] { Note(std::string("engine:") + member); };
        }
        shell.result = [this](DWORD action) {
            Note("icon:" + std::to_string(action));
            return TRUE;
        };
        store.beforeCall = [this](RegistryFunction function, const std::string& name) {
            if (function == RegistryFunction::Open) Note("open:" + name);
            if (function == RegistryFunction::Query) Note("read:" + name);
            if (function == RegistryFunction::Set) Note("write:" + name);
        };
    }

    // The window takes leave of the engine, which goes first.
    ~Journalled() {
        if (g_frmConfig != nullptr) g_frmConfig->Unload();
    }

    void Note(const std::string& text) {
        if (text.starts_with("read:") && !entries.empty() && entries.back() == text) return;
        entries.push_back(text);
        if (atEntry) atEntry();
    }

    // The number of the first or last entry with this text; -1 where there is none.
    int First(const std::string& text) const {
        const auto found = std::ranges::find(entries, text);
        return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
    }
    int Last(const std::string& text) const {
        const auto found = std::find(entries.rbegin(), entries.rend(), text);
        return static_cast<int>(entries.rend() - found) - 1;
    }
    int Count(const std::string& text) const { return static_cast<int>(std::ranges::count(entries, text)); }

    // Runs work in the next call of the engine's member.
    void LetIn(const std::string& member, const std::function<void()>& work) {
        engine.script.within[member] = [work, isFirst = true]() mutable {
            if (std::exchange(isFirst, false)) work();
        };
    }

    std::vector<std::string> entries;
    std::function<void()> atEntry;  // runs with each entry
    FakeEngine engine;
    ShellCalls shell;
    RegistryCalls store{RegistryCalls::Of::Memory};  // the user's settings, none at first

private:
    const ImportFake<"CreateDialogParamW", decltype(&CreateDialogParamW)> m_makeDialog{
        "user32.dll",
        [this](HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure, LPARAM parameter) {
            Note(resource == MAKEINTRESOURCEW(IDD_CONFIG) ? "window" : "page");
            return m_makeDialog.Original(instance, resource, parent, procedure, parameter);
        }};
};
