// A real dialog window, made in memory, with real controls on it.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "platform/controls/dialog.h"
#include "platform/controls/list_view.h"

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

// Adds a row "text|sub-item|...|x" to a list view, the x only where it is to be checked.
void AddRow(ListView& list, std::wstring row);

// The controls of several groups, one group after the other.
std::vector<Control*> Join(std::initializer_list<ControlTable> groups);
