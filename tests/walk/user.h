// A user of the real manager: presses its buttons, fills in its dialogs, reads what its pages show.
#pragma once

#include <windows.h>

#include <map>
#include <optional>
#include <string>

#include "tests/engine/stand_in.h"
#include "tests/support/manager.h"
#include "tests/support/other_process.h"

enum class Page { Settings, Exclude, Log, Banners, Search, About };

class User {
public:
    StandIn engine;  // which the manager calls; it is there before

    // Starts the manager on an empty store and shows its window.
    User() { Start(false); }

    // Ends the manager's process from outside, without a chance to save, then its engine, and starts the
    // manager again.
    void KillAndRestart();

    Manager& Program() { return *m_manager; }

    void TurnTo(Page page);

    // What all pages show, but for the log.
    Rows Look();
    Rows Excluded() { return ListBoxRows(Find(L"lstExclude")); }
    bool CanPress(const wchar_t* name) { return IsWindowEnabled(Find(name)) != FALSE; }
    bool IsWindowShown() { return IsWindowVisible(m_manager->Window()) != FALSE; }

    // A button that opens nothing; returns when its work is done. Throws std::runtime_error when it is out of
    // sight or disabled.
    void Press(const wchar_t* name);

    // A button that opens a dialog; returns the dialog.
    HWND Open(const wchar_t* name, const wchar_t* title);

    // Presses the button of a dialog and waits until the dialog is gone; before, fills in its boxes and
    // presses OK.
    void Close(HWND dialog, int button);
    void Answer(HWND dialog, const std::map<int, std::wstring>& fields);

    // Rows count from 0. Selecting and ticking goes by keyboard.
    void Select(const wchar_t* list, int row);
    void Tick(const wchar_t* list, int row);
    void Key(const wchar_t* name, UINT virtualKey);

    // Presses the upper or lower arrow of a spin control.
    void Spin(const wchar_t* name, bool up) { ClickArrow(Find(name), up); }

    HWND Find(const wchar_t* name) { return m_manager->Control(name); }

private:
    void Start(bool keepSettings);
    HWND Pressable(const wchar_t* name);

    std::optional<Manager> m_manager;
};
