// The servers that the manager is measured beside: COM servers in programs of their own, with the manager's
// public interface. They differ in the window that they make for their client.
#pragma once

#include <windows.h>

struct BareServerIdentity {
    CLSID classId;
    const wchar_t* program;
};

// An empty window and the registry calls of a start.
inline constexpr BareServerIdentity kEmptyServer{
    {0x5d4c1e7a, 0x0b52, 0x4f0e, {0x9a, 0x41, 0x6c, 0x0d, 0x2f, 0x77, 0x18, 0x31}}, L"empty_server.exe"};

// The same with the manager's dialogs, without code behind them, and an icon in the notification area.
inline constexpr BareServerIdentity kDialogServer{
    {0x5d4c1e7a, 0x0b52, 0x4f0e, {0x9a, 0x41, 0x6c, 0x0d, 0x2f, 0x77, 0x18, 0x32}}, L"dialog_server.exe"};

// The class under which clients know the server.
extern const CLSID kBareServerClass;

// Makes the window, hidden. It lives until the process ends.
HWND MakeWindow();
