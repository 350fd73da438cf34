// What the manager tells the shell of its icon and shows as its tray menu: a record that its process writes
// and the test's process reads, in memory that both share.
#pragma once

#include <windows.h>

inline constexpr wchar_t kTrayRecordName[] = L"Calvane tests: tray record";

// One call of Shell_NotifyIconA.
struct ShellCall {
    DWORD action = 0;
    int picture = 0;  // the resource whose picture the icon shows; 0 for any other
    BOOL done = FALSE;
};

struct TrayRecord {
    static constexpr LONG kMaxCalls = 20000;

    // Counted last, so that whatever is counted is complete.
    volatile LONG calls;
    volatile LONG menusShown;
    volatile LONG menusClosed;

    // What the menu closed last was closed on; 0 where nothing was chosen.
    UINT chosen;

    // The menu shown last, an item a line: "-" for a separator, otherwise "+" or, for an item that cannot be
    // chosen, "x", and the caption. The default item's line begins with "*".
    wchar_t menu[400];
    ShellCall call[kMaxCalls];
};
