#include "app/config_page.h"

#include "platform/controls/theme.h"

void ConfigPage::CreateOn(HWND parent, const RECT& area, HWND sibling) {
    Create(parent);
    EnableTabTexture(Hwnd());
    SetWindowPos(Hwnd(), sibling, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    CentreIn(area);
}

void ConfigPage::Follow(const RECT& area, int dpi) {
    Scale(dpi);
    CentreIn(area);
}

// The edges of a tab control are so many pixels wide, whatever the scale: with the space that they leave the
// margins of the page grow on both sides alike.
void ConfigPage::CentreIn(const RECT& area) noexcept {
    RECT page{};
    GetClientRect(Hwnd(), &page);
    SetWindowPos(Hwnd(), nullptr, (area.left + area.right - page.right) / 2,
                 (area.top + area.bottom - page.bottom) / 2, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
