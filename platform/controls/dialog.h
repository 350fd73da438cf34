// A window made from a dialog resource, whose controls raise their own events. It is laid out in the font
// that the user has chosen for messages, for the resolution of the monitor that it lies on.
#pragma once

#include <windows.h>

#include "platform/controls/control.h"
#include "platform/controls/dialog_layout.h"

class Dialog {
public:
    // resourceId: the dialog template. The controls belong to the derived class and may lie on several
    // dialogs of one window: each dialog attaches those that its template holds.
    explicit Dialog(int resourceId) : m_resourceId(resourceId), m_layout(resourceId) {}
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;
    virtual ~Dialog();

    HWND Hwnd() const noexcept { return m_hwnd; }

    // The resolution that the window is laid out for.
    int Dpi() const noexcept { return m_dpi; }

    // Makes the window, hidden unless the template says otherwise. Throws AutomationError when Windows
    // cannot.
    void Create(HWND parent);
    void Destroy() noexcept { DestroyWindow(m_hwnd); }

    // Shows the dialog and returns when it has been closed. owner is disabled meanwhile; a window that owner
    // itself already disabled for a modal child is no owner. A dialog that cannot be made is not shown.
    void ShowModal(HWND owner);

    // Lays a dialog that is the child of another out for the resolution of that. Other dialogs follow their
    // monitor by themselves.
    void Scale(int dpi);

    // Ends ShowModal.
    void Close() noexcept { EndDialog(m_hwnd, 0); }

protected:
    virtual ControlTable Controls() = 0;

    // Controls are attached. Returns false when it has set the focus itself.
    virtual bool OnInit() { return true; }

    // The dialog has been laid out once more, for this resolution or in another font.
    virtual void OnScaled(int) {}

    // Messages that are nobody's: the result says whether result holds the message's result.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

private:
    static INT_PTR CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void AttachControls();
    void DetachControls() noexcept;

    const int m_resourceId;
    HWND m_hwnd = nullptr;
    int m_dpi = 0;
    DialogLayout m_layout;
};
