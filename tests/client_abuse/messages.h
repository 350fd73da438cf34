// Window messages that make no sense, without those whose parameters are addresses and those that end a
// window.
#pragma once

#include <windows.h>

#include "tests/client_abuse/chance.h"

// Whether a message from WM_NULL to WM_USER may be sent with any parameters.
bool IsHarmless(UINT message);

// A message and its parameters for a dialog of the manager.
MSG RandomDialogMessage(Chance& chance, HWND dialog, HWND control);

// A message and its parameters for a control, by its window class.
MSG RandomControlMessage(Chance& chance, HWND control);
