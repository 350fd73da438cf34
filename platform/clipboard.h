// The clipboard, as far as the program fills it.
#pragma once

#include <windows.h>

#include <string>

// Nothing happens while another program has the clipboard open, or where memory runs out.
void CopyToClipboard(HWND owner, const std::wstring& text);
