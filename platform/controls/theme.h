// Visual styles.
#pragma once

#include <windows.h>

// Gives a dialog that lies on a tab page the page's background. Without visual styles it keeps its own.
void EnableTabTexture(HWND dialog);
