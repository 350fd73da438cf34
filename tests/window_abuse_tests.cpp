// Senseless messages to every window of the manager in this process.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/client_abuse/quiet_system.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"

namespace {

// A window and all that it holds.
struct Tree {
    explicit Tree(HWND top) {
        Take(top, reinterpret_cast<LPARAM>(this));
        EnumChildWindows(top, Take, reinterpret_cast<LPARAM>(this));
    }

    static BOOL CALLBACK Take(HWND window, LPARAM parameter) {
        Tree& tree = *reinterpret_cast<Tree*>(parameter);
        (ClassOf(window) == L"#32770" ? tree.dialogs : tree.controls).push_back(window);
        return TRUE;
    }

    std::vector<HWND> dialogs;
    std::vector<HWND> controls;
};

struct Shown : QuietSystem, InsideWithoutEngine {
    const ComPtr<IDispatch> config = Instance(formShow);
    const Tree windows{Window()};

    // The page, the buttons and the object behind them do what they do.
    static void CheckWorks() {
        CHECK(g_frmConfig->Handle() == g_lngConfigHwnd);
        CHECK(g_frmConfig->Show() == S_OK);
        CHECK(IsShown());
        SendDlgItemMessageW(Window(), IDC_TAB, TCM_SETCURSEL, 3, 0);
        CHECK(SelectedTab() == 3);
        EnableWindow(ControlOf(IDC_CMDAPPLY), TRUE);
        Click(IDC_CMDAPPLY);
        CHECK_FALSE(IsWindowEnabled(ControlOf(IDC_CMDAPPLY)));
    }
};

// Messages of all windows: none whose parameters are addresses, and none that ends the window or the session
// or waits in a loop of its own for a mouse that does not come.
constexpr UINT kOften[] = {WM_KEYDOWN,    WM_CHAR,         WM_MOUSEMOVE,     WM_SETFOCUS,   WM_KILLFOCUS,
                           WM_SIZE,       WM_MOVE,         WM_ACTIVATE,      WM_SHOWWINDOW, WM_PAINT,
                           WM_HSCROLL,    WM_VSCROLL,      WM_KEYUP,         WM_LBUTTONUP,  WM_MOUSEWHEEL,
                           WM_CANCELMODE, WM_THEMECHANGED, WM_SYSCOLORCHANGE};
constexpr UINT kSeldom[] = {
    WM_NULL,          WM_GETTEXTLENGTH, WM_QUERYOPEN,     WM_ACTIVATEAPP,     WM_FONTCHANGE,
    WM_TIMECHANGE,    WM_SETCURSOR,     WM_MOUSEACTIVATE, WM_CHILDACTIVATE,   WM_QUEUESYNC,
    WM_PAINTICON,     WM_GETFONT,       WM_SETHOTKEY,     WM_GETHOTKEY,       WM_QUERYDRAGICON,
    WM_COMPACTING,    WM_NOTIFYFORMAT,  WM_USERCHANGED,   WM_DISPLAYCHANGE,   WM_GETICON,
    WM_NCHITTEST,     WM_NCACTIVATE,    WM_SYNCPAINT,     WM_NCMOUSEMOVE,     WM_NCLBUTTONUP,
    WM_NCMBUTTONUP,   WM_DEADCHAR,      WM_SYSDEADCHAR,   WM_INITMENU,        WM_INITMENUPOPUP,
    WM_CHANGEUISTATE, WM_UPDATEUISTATE, WM_QUERYUISTATE,  WM_UNINITMENUPOPUP, WM_RBUTTONDBLCLK,
    WM_MBUTTONDOWN,   WM_MBUTTONUP,     WM_MBUTTONDBLCLK, WM_XBUTTONDOWN,     WM_MOUSEHWHEEL,
    WM_PARENTNOTIFY,  WM_ENTERMENULOOP, WM_EXITMENULOOP,  WM_CAPTURECHANGED};

// Of the controls' classes, without addresses. Wine's edit control fails by itself at much that Windows' one
// bears.
constexpr UINT kOfEdit[] = {WM_CHAR,      WM_KEYDOWN,   WM_KEYUP,    WM_SETFOCUS,
                            WM_KILLFOCUS, WM_MOUSEMOVE, WM_LBUTTONUP};
const std::map<std::wstring, std::vector<UINT>> kOfClasses{
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

// Random messages that a printed seed brings back.
class Chance {
public:
    explicit Chance(uint32_t seed) : m_engine(seed) {}

    bool OneIn(uint32_t count) { return Below(count) == 0; }

    // To one of the dialogs or controls.
    MSG Message(const std::vector<HWND>& dialogs, const std::vector<HWND>& controls);

private:
    uint32_t Below(uint32_t limit) { return m_engine() % limit; }

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

    UINT OfAllWindows() { return OneIn(3) ? From(kOften) : From(kSeldom); }

    MSG Message(HWND window, UINT number) {
        MSG message{};
        message.hwnd = window;
        message.message = number;
        message.wParam = static_cast<WPARAM>(Odd());
        message.lParam = OneIn(2) ? Odd() : MAKELPARAM(Below(600), Below(600));
        if (number == WM_CHAR) message.wParam = L' ' + Below(95);
        if (number == WM_PAINT) message.wParam = 0;
        return message;
    }

    MSG DialogMessage(HWND dialog, HWND control) {
        switch (Below(8)) {
            case 0: {
                MSG message = Message(dialog, WM_COMMAND);
                // What a control tells: a button's click only now and then, since that may open a dialog.
                message.wParam = MAKEWPARAM(GetDlgCtrlID(control), OneIn(40) ? 0 : 1 + Below(0x800));
                message.lParam = OneIn(4) ? 0 : reinterpret_cast<LPARAM>(control);
                return message;
            }
            case 1:
                return Message(dialog, (OneIn(2) ? WM_USER : WM_APP) + Below(0x4000));
            case 2:
                return Message(dialog, 0xC000 + Below(0x4000));
            case 3:
                if (OneIn(20)) {
                    constexpr WPARAM kCommands[] = {SC_MINIMIZE, SC_RESTORE, SC_MAXIMIZE, SC_CLOSE};
                    return {dialog, WM_SYSCOMMAND, From(kCommands), 0, 0, {}};
                }
                if (OneIn(20)) return Message(dialog, WM_CLOSE);
                [[fallthrough]];
            default:
                return Message(dialog, OfAllWindows());
        }
    }

    MSG ControlMessage(HWND control) {
        const std::wstring className = ClassOf(control);
        if (className == WC_EDITW) return Message(control, From(kOfEdit));
        const auto own = kOfClasses.find(className);
        if (own == kOfClasses.end() || !OneIn(8)) return Message(control, OfAllWindows());
        UINT number = From(own->second);
        // It may open a dialog.
        if (number == BM_CLICK && !OneIn(20)) number = BM_GETCHECK;
        MSG message = Message(control, number);
        // A row that there may be.
        if (OneIn(2)) message.wParam = Below(12);
        return message;
    }

    std::mt19937 m_engine;
};

MSG Chance::Message(const std::vector<HWND>& dialogs, const std::vector<HWND>& controls) {
    const HWND control = From(controls);
    return OneIn(2) ? DialogMessage(From(dialogs), control) : ControlMessage(control);
}

long dialogsServed = 0;
Chance* dialogChance = nullptr;

// Plays the user of whatever waits for one: a menu is closed; a dialog gets messages of its own and is
// cancelled.
void CALLBACK PlayUser(HWND, UINT, UINT_PTR, DWORD) {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    GetGUIThreadInfo(GetCurrentThreadId(), &info);
    if ((info.flags & GUI_INMENUMODE) != 0) EndMenu();

    for (const HWND window : DialogsOf(GetCurrentProcessId(), true)) {
        if (!IsWindowVisible(window)) continue;
        const Tree inside(window);
        for (int i = 0; i < 200 && IsWindow(window); ++i) {
            const MSG message = dialogChance->Message({window}, inside.controls);
            SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
        }
        if (IsWindow(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        ++dialogsServed;
    }
}

// The number in an environment variable; another where there is none.
long Wanted(const char* variable, long otherwise) {
    const char* const text = std::getenv(variable);
    return text != nullptr ? std::atol(text) : otherwise;
}

// As the message loop serves it, with its keyboard handling.
void Serve(MSG message) {
    if (!IsFormMessage(message)) DispatchMessageW(&message);
}

}  // namespace

TEST_CASE_FIXTURE(Shown, "senseless messages to every window leave them working") {
    const long messages = Wanted("ABUSE_MESSAGES", 1000000);
    const auto seed = static_cast<uint32_t>(Wanted("ABUSE_SEED", 20020517));
    REQUIRE(windows.dialogs.size() == 7);
    REQUIRE(windows.controls.size() >= 46);

    Chance chance(seed);
    dialogChance = &chance;
    dialogsServed = 0;
    const UINT_PTR player = SetTimer(nullptr, 0, 20, PlayUser);
    const HWND window = Window();
    const DWORD start = GetTickCount();
    DWORD slowest = 0;
    for (long i = 0; i < messages; ++i) {
        const MSG message = chance.Message(windows.dialogs, windows.controls);
        const UINT number = message.message;
        INFO("seed " << seed << ", number " << i << ", message " << number);
        const DWORD before = GetTickCount();
        if ((number == WM_KEYDOWN || number == WM_CHAR) && chance.OneIn(2)) {
            Serve(message);
        } else {
            SendMessageW(message.hwnd, number, message.wParam, message.lParam);
        }
        if (i % 500 == 0) PumpFor(1);
        slowest = std::max(slowest, GetTickCount() - before);
        REQUIRE(IsWindow(window));
    }
    KillTimer(nullptr, player);
    for (const auto& group : {windows.dialogs, windows.controls})
        CHECK(std::ranges::all_of(group, [](HWND each) { return IsWindow(each) != FALSE; }));
    CheckWorks();
    VARIANT_BOOL isLeaving = VARIANT_TRUE;
    CHECK(g_frmConfig->get_b_OKtoUnload(&isLeaving) == S_OK);
    CHECK(isLeaving == VARIANT_FALSE);
    MESSAGE(messages << " messages from seed " << seed << ", " << dialogsServed
                     << " dialogs opened on the way, " << GetTickCount() - start << " ms, slowest " << slowest
                     << " ms");
}

TEST_CASE_FIXTURE(Shown, "a window that is told once more that it is being made stays what it is") {
    for (const HWND dialog : windows.dialogs) {
        for (const LPARAM parameter : {LPARAM{0}, LPARAM{4711}})
            SendMessageW(dialog, WM_INITDIALOG, 0, parameter);
    }
    CheckWorks();
}

// The dialog manager's search for an accelerator ran for ever.
TEST_CASE_FIXTURE(
    Shown, "a key that another program posts to a control of a hidden page is no end of the message loop") {
    int hidden = 0;
    for (const HWND target : windows.controls) {
        if (!IsWindowVisible(target)) ++hidden;
        for (const UINT key : {WM_KEYDOWN, WM_CHAR, WM_SYSCHAR})
            Serve({target, key, L'~', 1, 0, {}});
    }
    CHECK(hidden > 20);
}
