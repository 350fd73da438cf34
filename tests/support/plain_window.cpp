#include "tests/support/plain_window.h"

#include <algorithm>

PlainWindow::PlainWindow() {
    constexpr char kClass[] = "CalvanePlainTestWindow";
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = OwnProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClass;
    RegisterClassA(&windowClass);
    m_hwnd = CreateWindowExA(0, kClass, "", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr, nullptr,
                             windowClass.hInstance, nullptr);
    SetWindowLongA(m_hwnd, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(this)));
}

PlainWindow::~PlainWindow() {
    if (!IsWindow(m_hwnd)) return;
    SetWindowLongA(m_hwnd, GWL_USERDATA, 0);
    DestroyWindow(m_hwnd);
}

int PlainWindow::Count(UINT message) const {
    return static_cast<int>(std::count_if(messages.begin(), messages.end(),
                                          [&](const Message& each) { return each.message == message; }));
}

LRESULT CALLBACK PlainWindow::OwnProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const self =
        reinterpret_cast<PlainWindow*>(static_cast<LONG_PTR>(GetWindowLongA(hwnd, GWL_USERDATA)));
    if (self != nullptr) self->messages.push_back({message, wParam, lParam});
    if (message >= WM_USER) return kAnswer;
    return DefWindowProcA(hwnd, message, wParam, lParam);
}
