// Window messages that make no sense, without those whose parameters are addresses and those that end a
// window.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <dde.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/support/other_process.h"

// Random numbers that a printed seed brings back.
class Chance {
public:
    explicit Chance(uint32_t seed) : m_engine(seed) {}

    uint32_t Below(uint32_t limit) { return m_engine() % limit; }
    bool OneIn(uint32_t count) { return Below(count) == 0; }

    template <class Range>
    auto& From(Range& range) {
        return range[Below(static_cast<uint32_t>(std::size(range)))];
    }

    // A number as careless callers pass it: small, negative, at a limit, or anything.
    LONG Odd() {
        constexpr LONG kOdd[] = {0,    1,      -1,      2,      3,          5,
                                 1025, 0x7FFF, -0x8000, 0xFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1};
        return OneIn(3) ? static_cast<LONG>(m_engine()) : From(kOdd);
    }

private:
    std::mt19937 m_engine;
};

// Left out of the messages below WM_USER, from and to.
inline constexpr UINT kRangesLeftOut[][2] = {
    // Of controls, among the messages of all windows: edit controls and scroll bars, list and combo boxes.
    {0x00B0, 0x00FF},
    {WM_CTLCOLORMSGBOX, WM_CTLCOLORSTATIC},
    {0x0140, 0x01FF},
    // Input methods, gestures, multiple documents, input methods again, the clipboard and printing, dynamic
    // data exchange.
    {0x010D, 0x010F},
    {0x0119, 0x011B},
    {0x0220, 0x0234},
    {0x0238, 0x02FF},
    {0x0300, 0x031E},
    {WM_DDE_FIRST, WM_DDE_LAST},
};

inline constexpr UINT kLeftOut[] = {
    // Their parameters are addresses: of windows,
    WM_CREATE, WM_NCCREATE, WM_NCCALCSIZE, WM_SETTEXT, WM_GETTEXT, WM_GETMINMAXINFO, WM_WINDOWPOSCHANGING,
    WM_WINDOWPOSCHANGED, WM_STYLECHANGING, WM_STYLECHANGED, WM_SIZING, WM_MOVING, WM_TIMER,
    // of dialogs, controls and menus,
    WM_INITDIALOG, WM_GETDLGCODE, WM_NOTIFY, WM_HELP, WM_TCARD, WM_DRAWITEM, WM_MEASUREITEM, WM_DELETEITEM,
    WM_COMPAREITEM, WM_CHARTOITEM, WM_VKEYTOITEM, WM_NEXTMENU, WM_MENUGETOBJECT, WM_GETOBJECT,
    // of the system and of other programs.
    WM_SETTINGCHANGE, WM_DEVMODECHANGE, WM_DEVICECHANGE, WM_POWERBROADCAST, WM_COPYDATA, WM_CANCELJOURNAL,
    WM_INPUTLANGCHANGE, WM_INPUTLANGCHANGEREQUEST,
    // They end the window or the session, or wait in a loop of their own for a mouse that does not come.
    WM_DESTROY, WM_NCDESTROY, WM_QUIT, WM_ENDSESSION, WM_QUERYENDSESSION, WM_SYSCOMMAND, WM_NCLBUTTONDOWN,
    WM_NCLBUTTONDBLCLK, WM_NCRBUTTONDOWN, WM_NCRBUTTONUP, WM_CONTEXTMENU, WM_RBUTTONUP, WM_NCMBUTTONDOWN,
    WM_SYSKEYDOWN, WM_SYSKEYUP, WM_SYSCHAR, WM_COMMAND, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_LBUTTONDBLCLK,
    WM_ENTERIDLE, WM_ENABLE, WM_SETREDRAW, WM_CLOSE, WM_MENUCHAR, WM_MENUSELECT,
    // What is drawn on is a device of the sender.
    WM_ERASEBKGND, WM_ICONERASEBKGND, WM_NCPAINT, WM_SETICON,
    // A window handle that is none.
    WM_NEXTDLGCTL,
    // Fonts and characters that are none make the edit control of Wine fail by itself.
    WM_SETFONT, WM_UNICHAR};

// Of the controls' classes, without addresses.
inline const std::map<std::wstring, std::vector<UINT>> kOfClasses{
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

inline UINT Harmless(Chance& chance) {
    constexpr UINT kOften[] = {WM_KEYDOWN,    WM_CHAR,         WM_MOUSEMOVE,     WM_SETFOCUS,   WM_KILLFOCUS,
                               WM_SIZE,       WM_MOVE,         WM_ACTIVATE,      WM_SHOWWINDOW, WM_PAINT,
                               WM_HSCROLL,    WM_VSCROLL,      WM_KEYUP,         WM_LBUTTONUP,  WM_MOUSEWHEEL,
                               WM_CANCELMODE, WM_THEMECHANGED, WM_SYSCOLORCHANGE};
    if (chance.OneIn(3)) return chance.From(kOften);
    for (;;) {
        const UINT message = chance.Below(WM_USER);
        const bool isLeftOut = std::ranges::find(kLeftOut, message) != std::end(kLeftOut) ||
                               std::ranges::any_of(kRangesLeftOut, [&](const auto& range) {
                                   return range[0] <= message && message <= range[1];
                               });
        if (!isLeftOut) return message;
    }
}

inline MSG RandomMessage(Chance& chance, HWND window, UINT number) {
    MSG message{};
    message.hwnd = window;
    message.message = number;
    message.wParam = static_cast<WPARAM>(chance.Odd());
    message.lParam = chance.OneIn(2) ? chance.Odd() : MAKELPARAM(chance.Below(600), chance.Below(600));
    if (number == WM_CHAR) message.wParam = L' ' + chance.Below(95);
    if (number == WM_PAINT) message.wParam = 0;
    return message;
}

// For a dialog of the manager with this control.
inline MSG RandomDialogMessage(Chance& chance, HWND dialog, HWND control) {
    switch (chance.Below(8)) {
        case 0: {
            MSG message = RandomMessage(chance, dialog, WM_COMMAND);
            // What a control tells: a button's click only now and then, since that may open a dialog.
            message.wParam =
                MAKEWPARAM(GetDlgCtrlID(control), chance.OneIn(40) ? 0 : 1 + chance.Below(0x800));
            message.lParam = chance.OneIn(4) ? 0 : reinterpret_cast<LPARAM>(control);
            return message;
        }
        case 1:
            return RandomMessage(chance, dialog, (chance.OneIn(2) ? WM_USER : WM_APP) + chance.Below(0x4000));
        case 2:
            return RandomMessage(chance, dialog, 0xC000 + chance.Below(0x4000));
        case 3:
            if (chance.OneIn(20)) {
                constexpr WPARAM kCommands[] = {SC_MINIMIZE, SC_RESTORE, SC_MAXIMIZE, SC_CLOSE};
                return {dialog, WM_SYSCOMMAND, chance.From(kCommands), 0, 0, {}};
            }
            if (chance.OneIn(20)) return RandomMessage(chance, dialog, WM_CLOSE);
            [[fallthrough]];
        default:
            return RandomMessage(chance, dialog, Harmless(chance));
    }
}

inline MSG RandomControlMessage(Chance& chance, HWND control) {
    const std::wstring className = ClassOf(control);
    if (className == WC_EDITW) {
        // Wine's edit control fails by itself at much that Windows' one bears.
        constexpr UINT kBorne[] = {WM_CHAR,      WM_KEYDOWN,   WM_KEYUP,    WM_SETFOCUS,
                                   WM_KILLFOCUS, WM_MOUSEMOVE, WM_LBUTTONUP};
        return RandomMessage(chance, control, chance.From(kBorne));
    }
    const auto own = kOfClasses.find(className);
    if (own == kOfClasses.end() || !chance.OneIn(8)) return RandomMessage(chance, control, Harmless(chance));
    UINT number = chance.From(own->second);
    // It may open a dialog.
    if (number == BM_CLICK && !chance.OneIn(20)) number = BM_GETCHECK;
    MSG message = RandomMessage(chance, control, number);
    // A row that there may be.
    if (chance.OneIn(2)) message.wParam = chance.Below(12);
    return message;
}
