// Keys pressed on the keyboard: they go to whichever window of the screen has the focus.
#pragma once

#include <windows.h>

#include <initializer_list>

// Presses the keys one after the other and releases them in the opposite order.
void PressKeys(std::initializer_list<WORD> keys);

// Time for what keys must not do.
inline constexpr DWORD kSettleTime = 150;
