// The manager with its outside, for pairs of a call that it makes and what comes in meanwhile.
#pragma once

#include <windows.h>

#include <array>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "options/resource.h"
#include "tests/entry/window_inside.h"
#include "tests/pairs/outside.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"
#include "tests/support/registry_calls.h"
#include "tests/support/test_folder.h"
#include "tray/tray_menu.h"

// The periods that tell the manager's timers apart, in milliseconds.
inline constexpr UINT kCommandTick = 500;
inline constexpr UINT kFrameTick = 250;
inline constexpr UINT kIconAgainTick = 2000;
inline constexpr UINT kEngineAgainTick = 100;

class Case : public Inside {
public:
    Case();

    // The configuration windows; the only one, null where there is none.
    std::vector<HWND> Windows() const { return DialogsOf(GetCurrentProcessId(), false); }
    HWND Window() const;
    HWND Child(int id) const;
    bool IsEnabled(int id) const { return IsWindowEnabled(Child(id)) != FALSE; }

    // Makes the window where there is none.
    void HaveWindow();

    // Everybody lets go: the next window is that of a new Config.
    void LetGo();

    // As the store and the window were at first.
    void FillStore() { registry.contents = m_filled; }
    void Restore(bool reloads, bool hasCommands);

    // References of the test's own, as a client holds them.
    ComPtr<frmConfig> Form() const { return g_frmConfig; }
    ComPtr<_ShellNotification> Icon() const;
    ComPtr<IDispatch> Picture() const;

    // As the user does it. Each returns false where there is no such window.
    bool Press(int id) const;  // a button
    bool PressApply() const;   // also while it is disabled
    bool Select(int list, int row) const;
    bool TakesGestures() const;          // the icon knows the window only once it has been loaded
    bool Gesture(LPARAM gesture) const;  // over the icon
    bool Choose(UINT item);              // in the tray menu; one that is open keeps others from opening

    bool NewTaskbar();
    void AddIcon() const;                     // the window's own
    HRESULT Animate(bool isForeign = false);  // with the window's own pictures, or those of another program

    // An icon that the shell refuses as it is busy, and a change that the engine refuses: they are made again
    // with a later tick.
    void HaveRefusedIcon(IDispatch* picture);
    void HaveRefusedChange();

    // Until nothing is left to be done: messages, ticks.
    void Settle();

    int RowCount(int list) const;

    RegistryCalls registry{RegistryCalls::Of::Memory};
    Outside outside;

    // The process's locks when nobody but the test's ConfigControl needs it.
    ULONG locks = Locks();

    // Who holds what, as long as the window lives: the process, the form, the icon.
    std::array<ULONG, 3> Held() const;

    // What the log must show.
    Rows newestLines;

private:
    TestFolder m_folder;
    RegistryContents m_filled;

    // All windows within m_parent, which do not change once it calls out.
    mutable std::vector<HWND> m_children;
    mutable HWND m_parent = nullptr;
};
