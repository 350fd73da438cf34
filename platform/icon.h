// Icons among the resources of the running program, in the sizes that the user has chosen for them.
#pragma once

#include <windows.h>

#include "platform/handle.h"

// Of the size of small icons on a monitor of this resolution. Null when there is no such icon.
IconHandle LoadSmallIcon(int resource, int dpi) noexcept;

// Null when there is no such icon.
IconHandle LoadIconOfSize(int resource, int width, int height) noexcept;

// The large and the small icon of a window, which outlive it.
class WindowIcons {
public:
    // Gives the window both in the sizes for a monitor of this resolution.
    void Set(HWND window, int resource, int dpi) noexcept;

private:
    IconHandle m_large;
    IconHandle m_small;
};
