#include "tests/client_abuse/messages.h"

#include <commctrl.h>
#include <dde.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

constexpr UINT kWithAddresses[] = {
    // Of windows.
    WM_CREATE, WM_NCCREATE, WM_NCCALCSIZE, WM_SETTEXT, WM_GETTEXT, WM_GETMINMAXINFO, WM_WINDOWPOSCHANGING,
    WM_WINDOWPOSCHANGED, WM_STYLECHANGING, WM_STYLECHANGED, WM_SIZING, WM_MOVING, WM_TIMER,
    // Of dialogs, controls and menus.
    WM_INITDIALOG, WM_GETDLGCODE, WM_NOTIFY, WM_HELP, WM_TCARD, WM_DRAWITEM, WM_MEASUREITEM, WM_DELETEITEM,
    WM_COMPAREITEM, WM_CHARTOITEM, WM_VKEYTOITEM, WM_NEXTMENU, WM_MENUGETOBJECT, WM_MDICREATE, WM_GETOBJECT,
    // Of the system and of other programs.
    WM_SETTINGCHANGE, WM_DEVMODECHANGE, WM_DEVICECHANGE, WM_POWERBROADCAST, WM_COPYDATA, WM_INPUT,
    WM_ASKCBFORMATNAME, WM_CANCELJOURNAL, WM_INPUTLANGCHANGE, WM_INPUTLANGCHANGEREQUEST};

// They end the window or the session, or wait in a loop of their own for a mouse that does not come.
constexpr UINT kEndingOrWaiting[] = {
    WM_DESTROY, WM_NCDESTROY, WM_QUIT, WM_ENDSESSION, WM_QUERYENDSESSION, WM_SYSCOMMAND, WM_NCLBUTTONDOWN,
    WM_NCLBUTTONDBLCLK, WM_NCRBUTTONDOWN, WM_NCRBUTTONUP, WM_CONTEXTMENU, WM_RBUTTONUP, WM_NCMBUTTONDOWN,
    WM_SYSKEYDOWN, WM_SYSKEYUP, WM_SYSCHAR, WM_COMMAND, WM_PRINT, WM_LBUTTONDOWN, WM_RBUTTONDOWN,
    WM_LBUTTONDBLCLK, WM_DROPFILES, WM_ENTERIDLE, WM_ENABLE, WM_SETREDRAW, WM_CLOSE, WM_ENTERSIZEMOVE,
    WM_MENUCHAR, WM_MENUSELECT, WM_PASTE, WM_COPY, WM_CUT,
    // What is drawn on is a device of the sender.
    WM_ERASEBKGND, WM_ICONERASEBKGND, WM_NCPAINT, WM_SETICON,
    // A window handle that is none.
    WM_NEXTDLGCTL,
    // Fonts and characters that are none make the edit control of Wine fail by itself.
    WM_SETFONT, WM_UNICHAR};

struct ClassMessages {
    const wchar_t* className;
    std::vector<UINT> messages;
};

// Without addresses.
const ClassMessages kOfClasses[] = {
    {WC_BUTTONW, {BM_CLICK, BM_SETCHECK, BM_GETCHECK, BM_SETSTATE}},
    {WC_LISTBOXW,
     {LB_SETCURSEL, LB_GETTEXTLEN, LB_DELETESTRING, LB_SETTOPINDEX, LB_GETCOUNT, LB_SETITEMDATA}},
    {WC_COMBOBOXW, {CB_SETCURSEL, CB_GETLBTEXTLEN, CB_SETTOPINDEX, CB_SETITEMHEIGHT}},
    {WC_LISTVIEWW,
     {LVM_DELETEITEM, LVM_ENSUREVISIBLE, LVM_SETCOLUMNWIDTH, LVM_GETITEMSTATE, LVM_SCROLL, LVM_GETNEXTITEM,
      LVM_REDRAWITEMS}},
    {WC_TABCONTROLW, {TCM_SETCURSEL, TCM_SETCURFOCUS, TCM_GETROWCOUNT}},
    {UPDOWN_CLASSW, {UDM_SETPOS, UDM_SETPOS32, UDM_GETPOS, UDM_SETBASE}},
};

template <size_t count>
bool Contains(const UINT (&messages)[count], UINT message) {
    return std::find(std::begin(messages), std::end(messages), message) != std::end(messages);
}

UINT Harmless(Chance& chance) {
    constexpr UINT kOften[] = {WM_KEYDOWN,    WM_CHAR,         WM_MOUSEMOVE,     WM_SETFOCUS,   WM_KILLFOCUS,
                               WM_SIZE,       WM_MOVE,         WM_ACTIVATE,      WM_SHOWWINDOW, WM_PAINT,
                               WM_HSCROLL,    WM_VSCROLL,      WM_KEYUP,         WM_LBUTTONUP,  WM_MOUSEWHEEL,
                               WM_CANCELMODE, WM_THEMECHANGED, WM_SYSCOLORCHANGE};
    if (chance.OneIn(3)) return chance.From(kOften);
    for (;;) {
        const UINT message = chance.Below(WM_USER);
        if (IsHarmless(message)) return message;
    }
}

LPARAM Parameter(Chance& chance) {
    return chance.OneIn(2) ? chance.Odd() : MAKELPARAM(chance.Below(600), chance.Below(600));
}

}  // namespace

bool IsHarmless(UINT message) {
    // Input methods, dynamic data exchange, multiple documents, printing and gestures.
    if (message >= WM_DDE_FIRST && message <= WM_DDE_LAST) return false;
    if (message >= 0x010D && message <= 0x010F) return false;
    if (message >= 0x0119 && message <= 0x011B) return false;
    if (message >= 0x0220 && message <= 0x0234) return false;
    if (message >= 0x0238 && message <= 0x02FF) return false;
    if (message >= 0x0300 && message <= 0x031E) return false;
    // Of controls, among the messages of all windows: edit controls, list boxes, combo boxes, scroll bars.
    if (message >= 0x00B0 && message <= 0x00FF) return false;
    if (message >= 0x0140 && message <= 0x01FF && message != WM_LBUTTONUP) return false;
    if (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) return false;
    return !Contains(kWithAddresses, message) && !Contains(kEndingOrWaiting, message);
}

MSG RandomDialogMessage(Chance& chance, HWND dialog, HWND control) {
    MSG message{};
    message.hwnd = dialog;
    message.lParam = Parameter(chance);
    message.wParam = static_cast<WPARAM>(chance.Odd());
    switch (chance.Below(8)) {
        case 0:
            // What a control tells: a button's click only now and then, since that may open a dialog.
            message.message = WM_COMMAND;
            message.wParam =
                MAKEWPARAM(GetDlgCtrlID(control), chance.OneIn(40) ? 0 : 1 + chance.Below(0x800));
            message.lParam = chance.OneIn(4) ? 0 : reinterpret_cast<LPARAM>(control);
            break;
        case 1:
            message.message =
                chance.OneIn(2) ? WM_USER + chance.Below(0x4000) : WM_APP + chance.Below(0x4000);
            break;
        case 2:
            message.message = 0xC000 + chance.Below(0x4000);
            break;
        case 3:
            if (chance.OneIn(20)) {
                constexpr WPARAM kCommands[] = {SC_MINIMIZE, SC_RESTORE, SC_MAXIMIZE, SC_CLOSE};
                message.message = WM_SYSCOMMAND;
                message.wParam = chance.From(kCommands);
                message.lParam = 0;
                break;
            }
            if (chance.OneIn(20)) {
                message.message = WM_CLOSE;
                break;
            }
            [[fallthrough]];
        default:
            message.message = Harmless(chance);
            if (message.message == WM_PAINT) message.wParam = 0;
            break;
    }
    return message;
}

MSG RandomControlMessage(Chance& chance, HWND control) {
    MSG message{};
    message.hwnd = control;
    message.wParam = static_cast<WPARAM>(chance.Odd());
    message.lParam = Parameter(chance);
    wchar_t className[64]{};
    GetClassNameW(control, className, 64);
    if (lstrcmpiW(className, WC_EDITW) == 0) {
        // Wine's edit control fails by itself at much that Windows' one bears.
        constexpr UINT kBorne[] = {WM_CHAR,      WM_KEYDOWN,   WM_KEYUP,    WM_SETFOCUS,
                                   WM_KILLFOCUS, WM_MOUSEMOVE, WM_LBUTTONUP};
        message.message = chance.From(kBorne);
        if (message.message == WM_CHAR) message.wParam = L' ' + chance.Below(95);
        return message;
    }
    const ClassMessages& own = chance.From(kOfClasses);
    const UINT ownMessage = chance.From(own.messages);
    if (chance.OneIn(3) && lstrcmpiW(own.className, className) == 0 &&
        (ownMessage != BM_CLICK || chance.OneIn(10))) {
        message.message = ownMessage;
        // A row that there may be.
        if (chance.OneIn(2)) message.wParam = chance.Below(12);
    } else {
        message.message = Harmless(chance);
        if (message.message == WM_CHAR) message.wParam = L' ' + chance.Below(95);
        if (message.message == WM_PAINT) message.wParam = 0;
    }
    return message;
}
