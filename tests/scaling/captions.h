// How wide and high the texts of a control are, and how much space it has for them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/dpi.h"
#include "tests/accessibility/surfaces.h"

// One text that somebody has to read, in pixels.
struct Caption {
    SIZE needed;  // the text and what the control draws round it
    SIZE space;

    bool Fits() const noexcept { return needed.cx <= space.cx && needed.cy <= space.cy; }
};

// Of one control: most have one text, lists one for each heading, combo boxes one for each item. Each text is
// taken to be longer by so many per cent of its characters.
std::vector<Caption> CaptionsOf(HWND control, int longer = 0);

// Of the title bar.
Caption TitleOf(const Surface& surface, int longer = 0);

// Of this process.
inline int Dpi() {
    return DpiOf(nullptr);
}

// Pixels of 96 dpi in pixels of this screen.
int Scaled(int pixels);

// Of the text in the control's own font, on one line.
SIZE SizeOfText(HWND control, const std::wstring& text);

// The name of the font that the control writes in, as the system has found it.
std::wstring FontOf(HWND control);

// Of the letters of that font, as the system was asked for it.
LONG FontHeightOf(HWND control);
