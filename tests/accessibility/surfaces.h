// Everything that the user may see at a time: each page with the window round it, and each dialog of the
// lists.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

struct Surface {
    std::wstring name;           // the caption of the tab, or of the dialog
    HWND window;                 // the top-level window
    std::vector<HWND> controls;  // those that are shown, in tab order; of a page too
};

// Shows one surface after the other, made by the program's own code, and calls visit with each. The manager's
// store is a throw-away one, and there is no engine.
void ForEachSurface(const std::function<void(const Surface& surface)>& visit);

DWORD StyleOf(HWND control);
RECT BoundsOf(HWND control);           // on the screen
std::wstring CaptionOf(HWND control);  // without the mark-up of a link

enum class Role {
    Text,
    Picture,
    Button,
    CheckBox,
    OptionButton,
    Frame,
    Link,
    TextBox,
    Spin,
    ListBox,
    ListView,
    Combo,
    Tabs
};
Role RoleOf(HWND control);
std::string NameOf(Role role);

// For messages: the surface, and what the control is and says.
std::string Describe(const Surface& surface, HWND control);
