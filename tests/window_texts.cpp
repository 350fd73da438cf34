// window_texts CAPTION: prints the text of each visible control of the dialogs whose caption begins like
// this.
#include <windows.h>

#include <cstdio>
#include <cwchar>

namespace {

BOOL CALLBACK PrintText(HWND control, LPARAM) {
    char text[1024];
    if (IsWindowVisible(control) &&
        SendMessageA(control, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text)) > 0) {
        std::puts(text);
    }
    return TRUE;
}

BOOL CALLBACK PrintDialog(HWND window, LPARAM caption) {
    const auto wanted = reinterpret_cast<const wchar_t*>(caption);
    wchar_t text[256] = L"";
    GetWindowTextW(window, text, 256);
    if (IsWindowVisible(window) && std::wcsncmp(text, wanted, std::wcslen(wanted)) == 0) {
        EnumChildWindows(window, PrintText, 0);
    }
    return TRUE;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2) return 2;
    EnumWindows(PrintDialog, reinterpret_cast<LPARAM>(arguments[1]));
    return 0;
}
