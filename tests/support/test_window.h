// A real dialog window, made in memory, with real controls on it.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <vector>

#include "platform/controls/dialog.h"

// Makes one child window for each control of the table, of the window class and style that its kind has in
// the program, stacked from top to bottom. The window is hidden unless shown.
class TestWindow final : public Dialog {
public:
    // The controls outlive the window.
    explicit TestWindow(std::vector<Control*> controls);
    ~TestWindow() override;

protected:
    ControlTable Controls() override { return m_controls; }
    bool OnInit() override;

private:
    std::vector<Control*> m_controls;
};

// The controls of several groups, one group after the other.
std::vector<Control*> Join(std::initializer_list<ControlTable> groups);
