// The record that describes our icon to the shell: its first, 88-byte ANSI form.
#pragma once

#include <windows.h>

#include <string_view>

#pragma pack(push, 1)
struct NotifyIconRecord {
    DWORD cbSize;
    HWND hWnd;
    UINT uID;
    UINT uFlags;
    UINT uCallbackMessage;
    HICON hIcon;
    char szTip[64];
};
#pragma pack(pop)

static_assert(sizeof(NotifyIconRecord) == 88, "the size tells the shell which form the record has");

// hwnd: the window that receives callbackMessage; the message's lParam is the mouse message over the icon.
// toolTip: goes with a NUL behind it into a field of 64 ANSI characters, padded with blanks; what does not
// fit is cut, so that a tip of 64 characters or more has no terminator.
NotifyIconRecord MakeNotifyIconRecord(HWND hwnd, UINT callbackMessage, HICON icon, std::wstring_view toolTip);

// action: NIM_ADD, NIM_MODIFY or NIM_DELETE. Returns whether the shell did it.
bool NotifyShell(DWORD action, const NotifyIconRecord& record);
