// What the bare servers differ in: the window that they make for their client.
#pragma once

#include <windows.h>

// The class under which clients know the server.
extern const CLSID kBareServerClass;

// Makes the window, hidden. It lives until the process ends.
HWND MakeWindow();
