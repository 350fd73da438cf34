// What the user sees and does: the screen's pixels, the mouse and the keyboard.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

// The pixels of a rectangle of the screen, row by row; equal pictures look the same.
struct ScreenPicture {
    int width = 0;
    int height = 0;
    std::vector<DWORD> pixels;

    bool operator==(const ScreenPicture&) const = default;
};

ScreenPicture PictureOf(HWND window);

// What paint draws over a background of one colour.
ScreenPicture Drawn(int width, int height, DWORD background, const std::function<void(HDC device)>& paint);

// Waits until the picture has come to rest.
ScreenPicture RestingPictureOf(HWND window);

// The real mouse: what the buttons do depends on what lies under the pointer.
void MoveMouseTo(POINT position);
POINT CenterOf(HWND window);
void LeftClick();
void DoubleClick();
void RightClick();
void MouseButton(DWORD flags);

// The real keyboard: keys go to the window with the focus.
void TypeKey(WORD virtualKey);
