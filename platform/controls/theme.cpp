#include "platform/controls/theme.h"

#include "platform/system_library.h"

// Windows without visual styles has no uxtheme.dll, so it is not linked but asked for.
void EnableTabTexture(HWND dialog) {
    constexpr DWORD kEnableTab = 6;  // ETDT_ENABLETAB
    using Enable = HRESULT WINAPI(HWND, DWORD);

    if (auto* const enable =
            FunctionOf<Enable>(LoadSystemLibrary(L"uxtheme.dll"), "EnableThemeDialogTexture")) {
        enable(dialog, kEnableTab);
    }
}
