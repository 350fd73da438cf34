// A page of the tabbed window: a child dialog that carries one group of the window's controls.
#pragma once

#include "platform/controls/dialog.h"

class ConfigPage final : public Dialog {
public:
    // caption: static text.
    ConfigPage(const wchar_t* caption, int resourceId, ControlTable controls)
        : Dialog(resourceId), m_caption(caption), m_controls(controls) {}

    // The text of the page's tab.
    const wchar_t* Caption() const noexcept { return m_caption; }

    // Makes the page, hidden, in the middle of area (in parent's coordinates) and behind the window sibling
    // in the tab order.
    void CreateOn(HWND parent, const RECT& area, HWND sibling);
    // The frame has been laid out for this resolution, and leaves the page this area.
    void Follow(const RECT& area, int dpi);
    void Show(bool visible) noexcept { ShowWindow(Hwnd(), visible ? SW_SHOW : SW_HIDE); }

protected:
    ControlTable Controls() override { return m_controls; }

private:
    void CentreIn(const RECT& area) noexcept;

    const wchar_t* const m_caption;
    const ControlTable m_controls;
};
