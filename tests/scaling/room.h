// How wide and high the texts of a control are, and how much room it has for them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// One text that somebody has to read, in pixels.
struct Caption {
    std::string where;
    SIZE needed;  // the text and what the control draws round it
    int text;     // of needed.cx, what the text takes
    SIZE room;
};

// Of one control: most have one text, lists one for each heading, tabs and combo boxes one for each item.
std::vector<Caption> CaptionsOf(const std::string& where, HWND control);

// Of the title bar.
Caption TitleOf(const std::string& where, HWND window);

int Dpi();

// Pixels of 96 dpi in pixels of this screen.
int Scaled(int pixels);
