// A window without anything in it.
#include "bench/bare_server/bare_server.h"

const CLSID kBareServerClass = kEmptyServer.classId;

HWND MakeWindow() {
    const WNDCLASSEXW windowClass{.cbSize = sizeof(windowClass),
                                  .style = 0,
                                  .lpfnWndProc = DefWindowProcW,
                                  .cbClsExtra = 0,
                                  .cbWndExtra = 0,
                                  .hInstance = GetModuleHandleW(nullptr),
                                  .hIcon = nullptr,
                                  .hCursor = LoadCursorW(nullptr, IDC_ARROW),
                                  .hbrBackground = GetSysColorBrush(COLOR_BTNFACE),
                                  .lpszMenuName = nullptr,
                                  .lpszClassName = L"BareServer",
                                  .hIconSm = nullptr};
    RegisterClassExW(&windowClass);
    return CreateWindowExW(0, windowClass.lpszClassName, L"Bare", WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU,
                           100, 100, 480, 400, nullptr, nullptr, windowClass.hInstance, nullptr);
}
