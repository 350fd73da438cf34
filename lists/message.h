// Message boxes.
#pragma once

#include <windows.h>

#include <string>

// The title of every message box.
inline constexpr wchar_t kApplicationTitle[] = L"Calvane";

// Shows text with an OK button and waits for it. icon: MB_ICONINFORMATION, or 0 for none.
inline void ShowMessage(HWND owner, const std::wstring& text, UINT icon) {
    MessageBoxW(owner, text.c_str(), kApplicationTitle, MB_OK | icon);
}
