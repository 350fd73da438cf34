// Icons among the resources of the running program, in the sizes that the user has chosen for them.
#pragma once

#include <windows.h>

#include "platform/handle.h"

// Null when there is no such icon.
IconHandle LoadSmallIcon(int resource);

// Gives a window its large and its small icon; Windows keeps both as long as the program runs.
void SetWindowIcons(HWND window, int resource) noexcept;
