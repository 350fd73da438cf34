#pragma once

#include "platform/controls/control.h"

// A row of tabs. Tabs count from 0. What lies under them is the owner's to show.
class TabStrip final : public Control {
public:
    TabStrip(const wchar_t* name, int id) : Control(ControlKind::TabStrip, name, id) {}

    // Raised when the user selects another tab, and when Selected does: Windows itself is silent then.
    Event Change;

    void AddTab(const wchar_t* caption);
    int Count() const noexcept { return static_cast<int>(Send(TCM_GETITEMCOUNT)); }
    int Selected() const noexcept { return static_cast<int>(Send(TCM_GETCURSEL)); }
    void Selected(int tab);

    // Keeps the texts as far from the edges of their tabs at this resolution as at any other.
    void Scale(int dpi) noexcept;

    // The area under the tabs, in the coordinates of the parent window.
    RECT DisplayArea() const noexcept;

    LRESULT OnNotify(const NMHDR& header) override;
};
