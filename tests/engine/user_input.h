// What the user does: the mouse and the keyboard.
#pragma once

#include <windows.h>

// The real mouse: what the buttons do depends on what lies under the pointer.
void MoveMouseTo(POINT position);
POINT CenterOf(HWND window);
void LeftClick();
void DoubleClick();
void RightClick();
void MouseButton(DWORD flags);

// The real keyboard: keys go to the window with the focus.
void TypeKey(WORD virtualKey);
