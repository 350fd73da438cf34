// Where the controls of a dialog lie in the user's own font: its template, measured in that font.
#pragma once

#include <windows.h>

#include "platform/handle.h"

class DialogLayout {
public:
    // resourceId: an extended dialog template among the resources of the running program.
    explicit DialogLayout(int resourceId) noexcept : m_resourceId(resourceId) {}

    // Gives the controls of the dialog the user's message font for this resolution and the places that they
    // have in it, and the dialog its size; its position stays. The result does not depend on what was before.
    // Nothing changes when there is no font to be had. The dialog itself keeps the font of its template,
    // which the dialog manager deletes.
    void Apply(HWND dialog, int dpi) noexcept;

    // The size of the dialog with its frame.
    SIZE WindowSize(HWND dialog, int dpi) const noexcept;

private:
    const int m_resourceId;
    FontHandle m_font;
};
