// What a user would not see whole: texts that are cut off, and controls that cover each other or leave their
// page.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/dpi.h"
#include "tests/accessibility/surfaces.h"

// One text that somebody has to read, two fifths longer, as a translation may be; in pixels.
struct Caption {
    SIZE needed;  // the text and what the control draws round it
    SIZE space;
};

// Of one control: most have one text, lists one for each heading, combo boxes one for each item.
std::vector<Caption> CaptionsOf(HWND control);

// A line for each fault. It begins with the description of the control and says which of these it is.
inline constexpr char kIsCutOff[] = " is cut off";
inline constexpr char kCovers[] = " covers ";
inline constexpr char kLeavesPage[] = " leaves its page";

std::string FaultsOf(const Surface& surface);

// Of one control, of it and those before it.
std::string FaultsOf(const Surface& surface, HWND control);

// The inside of a window, and where a tab control leaves space for its pages, both on the screen.
RECT ClientOf(HWND window);
RECT PageAreaOf(HWND tabs);

// Of this process, and pixels of 96 dpi in its pixels.
inline int Dpi() {
    return DpiOf(nullptr);
}
inline int Scaled(int pixels) {
    return MulDiv(pixels, Dpi(), kDefaultDpi);
}
