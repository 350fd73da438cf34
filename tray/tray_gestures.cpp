#include "tray/tray_gestures.h"

#include "platform/automation_error.h"
#include "shell_notification_interface.h"

namespace {

constexpr DISPID kMouseUp = 1;

// The icon's mouse message stands where forms expect a coordinate, and those are in twips: 15 to a pixel.
constexpr FLOAT kLeftDoubleClick = 15 * WM_LBUTTONDBLCLK;
constexpr FLOAT kRightButtonUp = 15 * WM_RBUTTONUP;
static_assert(kLeftDoubleClick == 7725 && kRightButtonUp == 7755);

// number: counted from the event's last argument.
VARIANT& ByReference(const DISPPARAMS& arguments, UINT number, VARTYPE type) {
    if (number >= arguments.cArgs || arguments.rgvarg[number].vt != (VT_BYREF | type) ||
        arguments.rgvarg[number].byref == nullptr) {
        RaiseError(ErrorNumber::TypeMismatch);
    }
    return arguments.rgvarg[number];
}

}  // namespace

TrayGestures::TrayGestures(TrayMenu& menu, TrayWindow& window, bool& theOKtoUnload)
    : m_window(window), b_OKtoUnload(theOKtoUnload) {
    menu.mnuShowConfig_Click = [this] { mnuShowConfig_Click(); };
    menu.mnuExit_Click = [this] { mnuExit_Click(); };
}

void TrayGestures::Connect(HWND configHwnd, IUnknown* shellIcon) {
    m_configHwnd = configHwnd;
    EventHandlers handlers;
    handlers[kMouseUp] = [this](const DISPPARAMS& arguments) {
        m_oShellIcon_MouseUp(*ByReference(arguments, 3, VT_I2).piVal, *ByReference(arguments, 2, VT_I2).piVal,
                             *ByReference(arguments, 1, VT_R4).pfltVal,
                             *ByReference(arguments, 0, VT_R4).pfltVal);
    };
    m_iconEvents.emplace(shellIcon, __uuidof(__ShellNotification), std::move(handlers));
}

void TrayGestures::mnuShowConfig_Click() {
    m_window.ShowModeless();
}

// Posted, so that the window does not go while the menu's message is still being handled.
void TrayGestures::mnuExit_Click() {
    b_OKtoUnload = true;
    PostMessageA(m_configHwnd, WM_CLOSE, 0, 0);
}

void TrayGestures::m_oShellIcon_MouseUp(SHORT&, SHORT&, FLOAT& x, FLOAT&) {
    SetForegroundWindow(m_configHwnd);
    if (x == kLeftDoubleClick) {
        m_window.ShowModeless();
    } else if (x == kRightButtonUp) {
        m_window.PopupTrayMenu(false);
    }
}
