// What the manager tells the shell of its icon and shows as its tray menu: a record that its process writes
// and the test's process reads, in memory that both share.
#pragma once

#include <windows.h>

inline constexpr wchar_t kTrayRecordName[] = L"Calvane tests: tray record";

struct TrayRecord {
    // What became of the icon: "add, change, delete, ..."; what the shell refused is named so.
    char story[1 << 18];

    // The icons that the shell has added and deleted. Counted last, so that whatever is counted is complete.
    volatile LONG added;
    volatile LONG deleted;
    volatile LONG menusShown;
    volatile LONG menusClosed;

    // How many icons there have been at once.
    LONG mostIcons;

    // What the menu closed last was closed on; 0 where nothing was chosen.
    UINT chosen;

    // The menu shown last, as EnabledItems has it.
    char menu[4];
};
