// What every control of a window has: a fixed name, a kind, a window, and events that the owning part listens
// to.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <span>
#include <string>
#include <string_view>

#include "platform/callback.h"

// The title of a window or the text of a control; empty where there is none.
std::wstring TextOf(HWND window);

enum class ControlKind {
    Button,
    CheckBox,
    ComboBox,
    Frame,
    Image,
    Label,
    Link,
    ListBox,
    ListView,
    OptionButton,
    TabStrip,
    TextBox,
    UpDown,
};

// A control exists from the construction of its owner on; its window only while the owner's window does.
// Without a window what is set goes nowhere, and what is read is empty.
class Control {
public:
    // name: static text. id: the control's number in the dialog resource, unique within its window.
    Control(ControlKind kind, const wchar_t* name, int id) : m_kind(kind), m_name(name), m_id(id) {}
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    ControlKind Kind() const noexcept { return m_kind; }
    std::wstring_view Name() const noexcept { return m_name; }
    int Id() const noexcept { return m_id; }
    HWND Hwnd() const noexcept { return m_hwnd; }

    // Called by the dialog when the window of the control comes and goes (null).
    void Attach(HWND hwnd);

    // The window has got another font and place.
    virtual void OnScaled() {}

    bool Enabled() const noexcept { return IsWindowEnabled(m_hwnd) != FALSE; }
    void Enabled(bool enabled) noexcept;
    void SetFocus() noexcept { ::SetFocus(m_hwnd); }

    // What the window of the control tells its parent: the code of a WM_COMMAND, the header of a WM_NOTIFY.
    // The result of the latter goes back to the control.
    virtual void OnCommand(WORD) {}
    virtual LRESULT OnNotify(const NMHDR&) { return 0; }

protected:
    virtual void OnAttached() {}

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const noexcept {
        return m_hwnd == nullptr ? 0 : SendMessageW(m_hwnd, message, wParam, lParam);
    }
    std::wstring WindowText() const { return TextOf(m_hwnd); }
    void WindowText(const std::wstring& text) noexcept { SetWindowTextW(m_hwnd, text.c_str()); }

private:
    const ControlKind m_kind;
    const wchar_t* const m_name;
    const int m_id;
    HWND m_hwnd = nullptr;
};

// The controls of one window, in its control order.
using ControlTable = std::span<Control* const>;

// Null where the window has no such control. Names are compared without regard to case, as Automation does.
Control* FindControl(ControlTable controls, int id);
Control* FindControl(ControlTable controls, std::wstring_view name);

// Stops a window from redrawing itself while many rows change.
class RedrawPause {
public:
    explicit RedrawPause(const Control& control) noexcept;
    RedrawPause(const RedrawPause&) = delete;
    RedrawPause& operator=(const RedrawPause&) = delete;
    ~RedrawPause();

private:
    const HWND m_hwnd;
};
