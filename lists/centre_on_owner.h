// Where the dialogs of the list pages appear.
#pragma once

#include <windows.h>

// Moves a dialog to the middle of its owner, or as near as the whole dialog fits on the screen.
void CentreOnOwner(HWND dialog) noexcept;
