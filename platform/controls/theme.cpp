#include "platform/controls/theme.h"

// Windows without visual styles has no uxtheme.dll, so it is not linked but asked for.
void EnableTabTexture(HWND dialog) {
    constexpr DWORD kEnableTab = 6;  // ETDT_ENABLETAB
    using Enable = HRESULT(WINAPI*)(HWND, DWORD);

    const HMODULE library = LoadLibraryExW(L"uxtheme.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr) return;
    // Stays loaded: the common controls use it as long as the process lives.
    if (const auto enable = reinterpret_cast<Enable>(
            reinterpret_cast<void*>(GetProcAddress(library, "EnableThemeDialogTexture")))) {
        enable(dialog, kEnableTab);
    }
}
