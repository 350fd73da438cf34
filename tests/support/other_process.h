// Reads controls, also those that live in another process, and does to them what a user does.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

using Rows = std::vector<std::wstring>;

std::wstring ClassOf(HWND window);
std::wstring ShownText(HWND window);

// The dialogs of a process that have an owner, or those that have none; the topmost comes first.
std::vector<HWND> DialogsOf(DWORD processId, bool haveOwner);

// The texts of a tab, a list box and a combo box.
std::wstring TabText(HWND tabs, int tab);
Rows ListBoxRows(HWND list);
Rows ComboItems(HWND combo);

// Headings of a list view, and its rows as "text|sub-item 1|...|x", the x only where the row is checked.
Rows Headings(HWND list);
Rows ListViewRows(HWND list);

// Types over the whole text, a key after the other.
void TypeInto(HWND box, const std::wstring& text);

// Clicks the upper or lower arrow of a spin control.
void ClickArrow(HWND spin, bool up);
