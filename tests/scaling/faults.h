// What a user would not see whole: texts that are cut off, and controls that cover each other or leave their
// page.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "tests/accessibility/surfaces.h"
#include "tests/support/shown_text.h"

// One line for each fault. It begins with the description of the control and says which of these it is.
inline constexpr char kIsCutOff[] = " is cut off";
inline constexpr char kCovers[] = " covers ";
inline constexpr char kLeavesPage[] = " leaves its page";

std::vector<std::string> FaultsOf(const Surface& surface);
inline const std::vector<std::string> kNoFaults;

// Of one control, and of it and those before it.
std::vector<std::string> FaultsOf(const Surface& surface, HWND control);

// The inside of a window, and where a tab control leaves space for its pages, both on the screen.
RECT ClientOf(HWND window);
RECT PageAreaOf(HWND tabs);
