// A page of the tabbed window: a child dialog that carries some of the window's controls.
#pragma once

#include "platform/controls/dialog.h"

class ConfigPage final : public Dialog {
public:
    ConfigPage(int resourceId, ControlTable controls) : Dialog(resourceId), m_controls(controls) {}

    // Makes the page, hidden, over area (in parent's coordinates) and behind the window sibling in the tab
    // order.
    void CreateOn(HWND parent, const RECT& area, HWND sibling);
    void Show(bool visible) noexcept { ShowWindow(Hwnd(), visible ? SW_SHOW : SW_HIDE); }

protected:
    ControlTable Controls() override { return m_controls; }

private:
    const ControlTable m_controls;
};
