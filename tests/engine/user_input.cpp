#include "tests/engine/user_input.h"

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
