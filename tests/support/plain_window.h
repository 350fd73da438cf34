// A hidden top-level window that keeps what its own procedure was told.
#pragma once

#include <windows.h>

#include <vector>

class PlainWindow {
public:
    struct Message {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
    };

    // What the procedure returns for messages from WM_USER on.
    static constexpr LRESULT kAnswer = 4711;

    PlainWindow();
    PlainWindow(const PlainWindow&) = delete;
    PlainWindow& operator=(const PlainWindow&) = delete;
    ~PlainWindow();

    HWND Hwnd() const noexcept { return m_hwnd; }
    LONG Number() const noexcept { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_hwnd)); }
    void Destroy() noexcept { DestroyWindow(m_hwnd); }

    // How often the message came.
    int Count(UINT message) const;

    // The procedure that the window has now.
    LONG Procedure() const noexcept { return GetWindowLongA(m_hwnd, GWL_WNDPROC); }

    std::vector<Message> messages;

private:
    static LRESULT CALLBACK OwnProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_hwnd = nullptr;
};
