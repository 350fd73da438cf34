// The notification area and the tray menu, seen from another process.
#pragma once

#include <windows.h>

#include <doctest.h>

#include <string>
#include <vector>

// Whether the shell knows the icon of the window.
bool ShellHasIcon(HWND configWindow);

// Without a taskbar Wine shows each icon as a window of its own. They appear up to half a second after their
// adding.
std::vector<HWND> ShownIcons();
HWND WaitForIcon();  // the only one; null when it does not come

// What the icon looks like: resting, the frames 0 to 2 of the animation, or anything else, as a picture
// half drawn.
enum class IconLook { Rest, Frame0, Frame1, Frame2, Other };
IconLook LookOf(HWND icon);
std::string NameOf(IconLook look);

// What the icon's callback tells the window: a mouse message over the icon.
void PostGesture(HWND configWindow, UINT mouseMessage);

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

// Which items of the menu are enabled, found out by comparing its picture with those of menus that the test
// shows itself: so captions, order, separators and the default item are compared too.
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

template <>
struct StringMaker<IconLook> {
    static String convert(IconLook look) { return NameOf(look).c_str(); }
};

}  // namespace doctest
