// Access keys that two buttons share.
#pragma once

#include <windows.h>

// Where several buttons of the dialog that are shown and enabled have this access key, the focus goes to the
// next of them behind the one that has it, round and round, and none is pressed: the space bar does that.
// False, and nothing happens, where there are not several.
bool FocusNextOfAccessKey(HWND dialog, wchar_t key);
