#include "app/config_page.h"

#include "platform/controls/theme.h"

void ConfigPage::CreateOn(HWND parent, const RECT& area, HWND sibling) {
    Create(parent);
    EnableTabTexture(Hwnd());
    SetWindowPos(Hwnd(), sibling, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOACTIVATE);
}
