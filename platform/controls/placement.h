// Where windows appear.
#pragma once

#include <windows.h>

// Moves a dialog to the middle of its owner, or as near as the whole dialog fits on the screen.
void CentreOnOwner(HWND dialog) noexcept;

// Moves a window to the middle of its monitor, as DS_CENTER does with a window of the size in its template.
void CentreOnMonitor(HWND window) noexcept;

// Moves a window that no monitor shows to the middle of the nearest one: a monitor may have gone since the
// window was last shown. A minimized window stays where it is.
void MoveOntoMonitor(HWND window) noexcept;
