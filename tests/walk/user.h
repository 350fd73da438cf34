// A user of the real manager: presses its buttons, fills in its dialogs, reads what its pages show.
#pragma once

#include <windows.h>

#include <map>
#include <optional>
#include <string>

#include "tests/support/manager.h"
#include "tests/support/other_process.h"

enum class Page { Settings, Exclude, Log, Banners, Search, About };

// What all pages show, and whether there is something to apply.
struct Shown {
    std::wstring startup;  // the caption of the chosen option
    bool playSound;
    bool beep;
    bool canChooseSound;
    bool canTestSound;
    std::wstring pauseKey;
    std::wstring speed;
    std::wstring pause;
    Rows exclude;
    Rows banners;
    Rows search;
    bool canApply;
};

class User {
public:
    // Starts the manager, on an empty store unless keepSettings, and shows its window.
    explicit User(bool keepSettings = false);

    // Ends the manager's process from outside, without a chance to save, then its engine, and starts the
    // manager again.
    void KillAndRestart();

    // Lets the manager end by itself, and starts it again.
    void EndAndRestart();

    // The window, to the front; one that has gone is made again.
    void Show();

    Manager& Program() { return *m_manager; }

    void TurnTo(Page page);
    Shown Look();
    Rows Excluded() { return ListBoxRows(Find(L"lstExclude")); }
    Rows Logged() { return ListBoxRows(Find(L"lstClosedWnd")); }
    Rows Banners() { return ListViewRows(Find(L"lvwBanners")); }
    Rows Searches() { return ListViewRows(Find(L"lvwSearchURLs")); }
    bool CanPress(const wchar_t* name) { return IsWindowEnabled(Find(name)) != FALSE; }
    bool IsWindowShown() { return IsWindowVisible(m_manager->Window()) != FALSE; }
    bool IsChecked(const wchar_t* name) { return SendMessageW(Find(name), BM_GETCHECK, 0, 0) == BST_CHECKED; }

    // A button that opens nothing; returns when its work is done. Throws std::runtime_error when it is out of
    // sight or disabled.
    void Press(const wchar_t* name);

    // A button that opens a dialog; returns the dialog.
    HWND Open(const wchar_t* name, const wchar_t* title);

    // A button that opens a message; returns what the message said, after its button was pressed.
    std::wstring PressAndRead(const wchar_t* name);

    // In a dialog. Close presses the button and waits until the dialog is gone.
    static void Type(HWND dialog, int id, const std::wstring& text) {
        TypeInto(GetDlgItem(dialog, id), text);
    }
    void Close(HWND dialog, int button);
    std::wstring PressAndRead(HWND dialog, int button);

    // Rows count from 0. Selecting and ticking goes by keyboard.
    void Select(const wchar_t* list, int row);
    void Tick(const wchar_t* list, int row);
    void Key(const wchar_t* name, UINT virtualKey);

    // Presses the upper or lower arrow of a spin control.
    void Spin(const wchar_t* name, bool up) { ClickArrow(Find(name), up); }

    // The whole dialogs, filled in and closed by OK.
    void AddExcluded(const std::wstring& address);
    void AddBanner(const std::wstring& height, const std::wstring& width);
    void AddSearch(const std::wstring& name, const std::wstring& address);

    HWND Find(const wchar_t* name);

private:
    void Start(bool keepSettings);
    HWND WaitForWindow(const std::wstring& title);
    std::wstring ReadMessage();
    void SelectFirst(HWND list);

    std::optional<Manager> m_manager;
    std::map<std::wstring, HWND> m_controls;
    DWORD m_process = 0;
};
