// The manager's dialogs without code behind them: a frame with tabs, and a page for each.
#pragma once

#include <windows.h>

// Makes the window and its pages, hidden, the first tab selected. The selection of a tab shows its page. It
// is destroyed with DestroyWindow; one at a time.
HWND MakeTabbedDialog();
