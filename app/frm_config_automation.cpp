// The configuration window as the automation object that Config.ConfigForm hands out.
#include "app/frm_config.h"
#include "platform/com/bstr.h"

namespace {

VARIANT_BOOL Boolean(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace

STDMETHODIMP frmConfig::get_b_OKtoUnload(VARIANT_BOOL* value) {
    if (value == nullptr) return E_POINTER;
    return ComMethod([&] { *value = Boolean(b_OKtoUnload); });
}

STDMETHODIMP frmConfig::put_b_OKtoUnload(VARIANT_BOOL value) {
    return ComMethod([&] { b_OKtoUnload = value != VARIANT_FALSE; });
}

STDMETHODIMP frmConfig::get_m_oShellIcon(IDispatch** value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] {
        if (m_oShellIcon != nullptr) ThrowIfFailed(m_oShellIcon.CopyTo(value));
    });
}

STDMETHODIMP frmConfig::get_m_oPopup(IDispatch** value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] { *value = m_engine.Popup().Detach(); });
}

STDMETHODIMP frmConfig::Show() {
    return ComMethod([&] { ShowModeless(); });
}

STDMETHODIMP frmConfig::Hide() {
    return ComMethod([&] { HideWindow(); });
}

STDMETHODIMP frmConfig::get_Visible(VARIANT_BOOL* value) {
    if (value == nullptr) return E_POINTER;
    return ComMethod([&] { *value = Boolean(IsWindowVisible(Hwnd()) != FALSE); });
}

STDMETHODIMP frmConfig::put_Visible(VARIANT_BOOL value) {
    return value != VARIANT_FALSE ? Show() : Hide();
}

STDMETHODIMP frmConfig::get_Caption(BSTR* value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] { *value = NewBstr(TextOf(Hwnd())); });
}

STDMETHODIMP frmConfig::put_Caption(BSTR value) {
    return ComMethod([&] { SetWindowTextW(Hwnd(), value == nullptr ? L"" : value); });
}

STDMETHODIMP frmConfig::get_hWnd(LONG* value) {
    if (value == nullptr) return E_POINTER;
    *value = 0;
    return ComMethod([&] { *value = Handle(); });
}

STDMETHODIMP frmConfig::get_picShellIcon(IDispatch** value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] { ThrowIfFailed(m_picShellIcon.CopyTo(value)); });
}

STDMETHODIMP frmConfig::get_picTray(short index, IDispatch** value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] {
        if (index < 0 || static_cast<size_t>(index) >= m_picTray.size())
            RaiseError(ErrorNumber::SubscriptOutOfRange);
        ThrowIfFailed(m_picTray[static_cast<size_t>(index)].CopyTo(value));
    });
}

// Finds the controls that have a window; the picture boxes of the tray icon have none.
STDMETHODIMP frmConfig::ControlHwnd(BSTR name, LONG* value) {
    if (value == nullptr) return E_POINTER;
    *value = 0;
    return ComMethod([&] {
        Handle();
        const Control* const control = FindControl(m_controls.All(), ViewOf(name));
        if (control == nullptr) RaiseError(ErrorNumber::InvalidProcedureCall);
        *value = HandleToLong(control->Hwnd());
    });
}
