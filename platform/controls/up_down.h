#pragma once

#include "platform/controls/control.h"
#include "platform/controls/text_box.h"

// A spin control beside a text box, its buddy. Each step starts from what the text box shows, typed or set,
// and ends in the range.
class UpDown final : public Control {
public:
    UpDown(const wchar_t* name, int id, TextBox& buddy, int minimum, int maximum)
        : Control(ControlKind::UpDown, name, id), m_buddy(buddy), m_minimum(minimum), m_maximum(maximum) {}

    // Raised after the user has changed the value with the arrows. Typing in the buddy raises nothing.
    Event Change;

    // Takes the value that the text box shows, from which a step goes on where the box has been emptied. To
    // be called when a value has been set from code; a text that is no number changes nothing.
    void FollowBuddy();

    void OnScaled() override;
    LRESULT OnNotify(const NMHDR& header) override;

protected:
    void OnAttached() override;

private:
    TextBox& m_buddy;
    const int m_minimum;
    const int m_maximum;
};
