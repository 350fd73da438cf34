#include "tests/engine/screen.h"

#include <algorithm>

#include "tests/support/manager.h"

ScreenPicture Drawn(int width, int height, DWORD background, const std::function<void(HDC device)>& paint) {
    ScreenPicture picture{width, height, {}};
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(format.bmiHeader);
    format.bmiHeader.biWidth = width;
    format.bmiHeader.biHeight = -height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    const HDC device = CreateCompatibleDC(nullptr);
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(device, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap != nullptr) {
        const HGDIOBJ previous = SelectObject(device, bitmap);
        auto* const first = static_cast<DWORD*>(bits);
        const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
        std::fill_n(first, count, background);
        paint(device);
        GdiFlush();
        picture.pixels.assign(first, first + count);
        // The fourth byte means nothing on the screen.
        for (DWORD& pixel : picture.pixels)
            pixel &= 0xFFFFFF;
        SelectObject(device, previous);
        DeleteObject(bitmap);
    }
    DeleteDC(device);
    return picture;
}

ScreenPicture PictureOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    const int width = static_cast<int>(area.right - area.left);
    const int height = static_cast<int>(area.bottom - area.top);
    return Drawn(width, height, 0, [&](HDC device) {
        const HDC screen = GetDC(nullptr);
        BitBlt(device, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
        ReleaseDC(nullptr, screen);
    });
}

ScreenPicture RestingPictureOf(HWND window) {
    ScreenPicture last = PictureOf(window);
    int equal = 0;
    WaitUntil([&] {
        Sleep(10);
        ScreenPicture next = PictureOf(window);
        equal = next == last ? equal + 1 : 0;
        last = std::move(next);
        return equal == 3;
    });
    return last;
}

void MoveMouseTo(POINT position) {
    SetCursorPos(position.x, position.y);
    Sleep(50);
}

POINT CenterOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

void MouseButton(DWORD flags) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    SendInput(1, &input, sizeof(input));
}

void LeftClick() {
    MouseButton(MOUSEEVENTF_LEFTDOWN);
    MouseButton(MOUSEEVENTF_LEFTUP);
}

void DoubleClick() {
    LeftClick();
    LeftClick();
}

void RightClick() {
    MouseButton(MOUSEEVENTF_RIGHTDOWN);
    MouseButton(MOUSEEVENTF_RIGHTUP);
}

void TypeKey(WORD virtualKey) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    SendInput(1, &input, sizeof(input));
    input.ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(1, &input, sizeof(input));
}
