#include "platform/controls/dialog.h"

#include "platform/automation_error.h"
#include "platform/dpi.h"
#include "platform/guard.h"

void Dialog::Create(HWND parent) {
    if (CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(m_resourceId), parent, Procedure,
                           reinterpret_cast<LPARAM>(this)) == nullptr) {
        ThrowLastError();
    }
}

// The derived class, which knows the controls, is gone by now: the window must not ask for them any more.
Dialog::~Dialog() {
    if (m_hwnd == nullptr) return;
    SetWindowLongPtrW(m_hwnd, DWLP_USER, 0);
    DestroyWindow(m_hwnd);
}

void Dialog::ShowModal(HWND owner) {
    if (m_hwnd != nullptr) return;
    DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(m_resourceId), owner, Procedure,
                    reinterpret_cast<LPARAM>(this));
}

void Dialog::Scale(int dpi) {
    if (m_hwnd == nullptr) return;
    m_layout.Apply(m_hwnd, dpi);
    m_dpi = dpi;
    for (Control* const control : Controls()) {
        if (control->Hwnd() != nullptr && GetParent(control->Hwnd()) == m_hwnd) control->OnScaled();
    }
    OnScaled(dpi);
}

bool Dialog::OnMessage(UINT, WPARAM, LPARAM, LRESULT&) {
    return false;
}

INT_PTR CALLBACK Dialog::Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        // Any program may send it once more, with anything for a parameter.
        if (GetWindowLongPtrW(hwnd, DWLP_USER) != 0) return FALSE;
        SetWindowLongPtrW(hwnd, DWLP_USER, lParam);
        reinterpret_cast<Dialog*>(lParam)->m_hwnd = hwnd;
    }
    auto* const self = reinterpret_cast<Dialog*>(GetWindowLongPtrW(hwnd, DWLP_USER));
    if (self == nullptr) return FALSE;

    INT_PTR handled = FALSE;
    Guarded([&] { handled = self->Handle(message, wParam, lParam); });
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        self->m_hwnd = nullptr;
    }
    return handled;
}

INT_PTR Dialog::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    switch (message) {
        case WM_INITDIALOG:
            ScaleByItself(m_hwnd);
            m_dpi = DpiOf(m_hwnd);
            m_layout.Apply(m_hwnd, m_dpi);
            AttachControls();
            return OnInit();

        // The move between monitors: Windows asks for the new size, and then suggests bounds of that size
        // which keep the window under the pointer that moves it. Position and size are set together: half
        // of the way the window might belong to the monitor that it has just left.
        case kGetDpiScaledSize:
            *reinterpret_cast<SIZE*>(lParam) = m_layout.WindowSize(m_hwnd, static_cast<int>(wParam));
            SetWindowLongPtrW(m_hwnd, DWLP_MSGRESULT, TRUE);
            return TRUE;

        case WM_DPICHANGED: {
            const auto& suggested = *reinterpret_cast<const RECT*>(lParam);
            SetWindowPos(m_hwnd, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                         suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
            Scale(HIWORD(wParam));
            return TRUE;
        }

        case WM_SETTINGCHANGE:
            if (wParam == SPI_SETNONCLIENTMETRICS) Scale(m_dpi);
            break;

        case WM_DESTROY:
            OnMessage(message, wParam, lParam, result);
            DetachControls();
            return TRUE;

        case WM_COMMAND:
            // The dialog manager sends IDOK and IDCANCEL for Enter and Esc whether or not there is such a
            // button.
            if (Control* const control = FindControl(Controls(), LOWORD(wParam));
                control != nullptr && control->Hwnd() != nullptr) {
                if (control->Enabled()) control->OnCommand(HIWORD(wParam));
                return TRUE;
            }
            break;

        case WM_NOTIFY: {
            // The structures of key notifications are packed and may lie at any address; nobody listens to
            // them.
            if (lParam % static_cast<LPARAM>(alignof(NMHDR)) != 0) return FALSE;
            const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
            if (Control* const control = FindControl(Controls(), static_cast<int>(header.idFrom));
                control != nullptr && control->Hwnd() == header.hwndFrom) {
                SetWindowLongPtrW(m_hwnd, DWLP_MSGRESULT, control->OnNotify(header));
                return TRUE;
            }
            break;
        }

        default:
            break;
    }
    if (!OnMessage(message, wParam, lParam, result)) return FALSE;
    SetWindowLongPtrW(m_hwnd, DWLP_MSGRESULT, result);
    return TRUE;
}

void Dialog::AttachControls() {
    for (Control* const control : Controls()) {
        if (const HWND child = GetDlgItem(m_hwnd, control->Id())) control->Attach(child);
    }
}

void Dialog::DetachControls() noexcept {
    for (Control* const control : Controls()) {
        if (GetParent(control->Hwnd()) == m_hwnd) control->Attach(nullptr);
    }
}
