// The icon and the tray menu of the manager, recorded in its process.
#pragma once

#include <windows.h>

#include <doctest.h>

#include <string>
#include <vector>

#include "tests/engine/library/tray_record.h"

// Begins a new record. The manager that is started next, with this library in it, writes to it. Returns the
// library's path.
std::wstring BeginTrayRecord();

// Whether the shell knows the icon of the window.
bool ShellHasIcon(HWND configWindow);

// The icon as the calls that the shell has carried out have left it.
int ShownIcons();

// Waits until there is one and it rests: its adding, with the resting picture, was the last call.
bool WaitForIcon();
bool WaitForIconAfter(int added);  // the same, after at least so many earlier ones

// What the icon has looked like since a call, counted from 0: "add rest, frame 0, delete, ...".
std::vector<ShellCall> ShellCalls();
std::string IconStory(size_t first = 0);

// What the icon's callback tells the window: a mouse message over the icon.
void PostGesture(HWND configWindow, UINT mouseMessage);

// The real mouse and keyboard: what they do depends on what lies under the pointer and has the focus.
void MoveMouseTo(POINT position);
void LeftClick();
void TypeKey(WORD virtualKey);

// The open menu's window; null when none is open.
HWND OpenMenu();
HWND WaitForMenu();  // and until it takes the mouse and the keyboard
bool MenuCloses();

// Opens the menu by the icon's gesture, away from the mouse pointer's earlier place.
HWND PopUpMenu(HWND configWindow);
void CloseMenu();  // by Esc

// Chooses from the open menu by the underlined letter.
void Choose(wchar_t mnemonic);

// Pops up the menu and chooses.
void Command(HWND configWindow, wchar_t mnemonic);

// Which items of the menu are enabled. Captions, order, separators and the default item, Pause, are right in
// all but the last.
enum class MenuLook { Designed, Running, Stopped, Other };
MenuLook LookOfOpenMenu();

// Pops up the menu, looks and closes it.
MenuLook LookOfMenu(HWND configWindow);

namespace doctest {

template <>
struct StringMaker<MenuLook> {
    static String convert(MenuLook look) {
        constexpr const char* kNames[] = {"as designed", "running", "stopped", "another"};
        return kNames[static_cast<int>(look)];
    }
};

}  // namespace doctest
