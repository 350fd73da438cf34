// The icon and the tray menu of the manager, recorded in its process.
#pragma once

#include <windows.h>

#include <string>

// Begins a new record. The manager that is started next, with this library in it, writes to it. Returns the
// library's path.
std::wstring BeginTrayRecord();

// Whether the shell knows the icon of the window.
bool ShellHasIcon(HWND configWindow);

// The icons as the calls that the shell has carried out have left them, and the most that there have been.
int ShownIcons();
int MostIcons();

// Waits until there is one, added after at least so many earlier ones, and it rests: its adding was the last
// call.
bool WaitForIcon(int earlier = 0);

// What became of the icon: "add, change, delete, ...".
std::string IconStory();

// What the icon's callback tells the window: a mouse message over the icon.
void PostGesture(HWND configWindow, UINT mouseMessage);

// The open menu's window; null when none is open.
HWND OpenMenu();
HWND WaitForMenu();  // and until it takes the mouse and the keyboard

// Opens the menu by the icon's gesture, away from the mouse pointer's earlier place. Returns what can be
// chosen, as EnabledItems has it.
std::string PopUpMenu(HWND configWindow);
void CloseMenu();  // by Esc

// The icon's menu, which is opened and closed.
std::string MenuOf(HWND configWindow);

// Chooses from the open menu by the underlined letter.
void Choose(wchar_t mnemonic);

// Pops up the menu and chooses.
void Command(HWND configWindow, wchar_t mnemonic);
