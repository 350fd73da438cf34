// Senseless messages to every window of the manager in this process.
#include <doctest.h>

#include <algorithm>
#include <vector>

#include "app/resource.h"
#include "lists/resource.h"
#include "tests/client_abuse/messages.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/entry/inside.h"
#include "tests/support/message_pump.h"

namespace {

BOOL CALLBACK TakeWindow(HWND window, LPARAM parameter) {
    reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    return TRUE;
}

bool IsDialog(HWND window) {
    wchar_t className[16]{};
    GetClassNameW(window, className, 16);
    return lstrcmpW(className, L"#32770") == 0;
}

struct Tree {
    std::vector<HWND> dialogs;
    std::vector<HWND> controls;
};

// A window and all that it holds.
Tree WindowsOf(HWND top) {
    std::vector<HWND> all{top};
    EnumChildWindows(top, TakeWindow, reinterpret_cast<LPARAM>(&all));
    Tree windows;
    for (const HWND window : all)
        (IsDialog(window) ? windows.dialogs : windows.controls).push_back(window);
    return windows;
}

HWND ConfigWindow() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
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

    std::vector<HWND> windows;
    EnumThreadWindows(GetCurrentThreadId(), TakeWindow, reinterpret_cast<LPARAM>(&windows));
    for (const HWND window : windows) {
        if (window == ConfigWindow() || !IsDialog(window) || !IsWindowVisible(window)) continue;
        const Tree inside = WindowsOf(window);
        for (int i = 0; i < 200 && IsWindow(window); ++i) {
            const HWND control = dialogChance->From(inside.controls);
            const MSG message = dialogChance->OneIn(2) ? RandomDialogMessage(*dialogChance, window, control)
                                                       : RandomControlMessage(*dialogChance, control);
            SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
        }
        if (IsWindow(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        ++dialogsServed;
    }
}

}  // namespace

TEST_CASE("senseless messages to every window leave them working") {
    const long messages = Chance::Count("ABUSE_MESSAGES", 1000000);
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(formShow);
    const HWND window = ConfigWindow();
    const Tree windows = WindowsOf(window);
    REQUIRE(windows.dialogs.size() == 7);
    REQUIRE(windows.controls.size() >= 46);

    const uint32_t seed = Chance::Seed();
    Chance chance(seed);
    dialogChance = &chance;
    dialogsServed = 0;
    const UINT_PTR user = SetTimer(nullptr, 0, 20, PlayUser);
    const DWORD start = GetTickCount();
    DWORD slowest = 0;
    UINT slowestMessage = 0;
    long keys = 0;
    for (long i = 0; i < messages; ++i) {
        const HWND control = chance.From(windows.controls);
        const MSG message = chance.OneIn(2)
                                ? RandomDialogMessage(chance, chance.From(windows.dialogs), control)
                                : RandomControlMessage(chance, control);
        INFO("seed " << seed << ", number " << i << ", message " << message.message);
        const DWORD before = GetTickCount();
        MSG posted = message;
        if ((message.message == WM_KEYDOWN || message.message == WM_CHAR) && chance.OneIn(2)) {
            if (!g_frmConfig->IsFormMessage(posted)) DispatchMessageW(&posted);
            ++keys;
        } else {
            SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
        }
        if (i % 500 == 0) PumpFor(1);
        if (GetTickCount() - before > slowest) {
            slowest = GetTickCount() - before;
            slowestMessage = message.message;
        }
        REQUIRE(IsWindow(window));
    }
    KillTimer(nullptr, user);
    // Every window is still there, and the page, the buttons and the object behind them do what they do.
    CHECK(std::ranges::all_of(windows.dialogs, [](HWND each) { return IsWindow(each) != FALSE; }));
    CHECK(std::ranges::all_of(windows.controls, [](HWND each) { return IsWindow(each) != FALSE; }));
    LONG handle = 0;
    CHECK(g_frmConfig->get_hWnd(&handle) == S_OK);
    CHECK(handle == g_lngConfigHwnd);
    CHECK(g_frmConfig->Show() == S_OK);
    CHECK(IsWindowVisible(window));
    SendDlgItemMessageW(window, IDC_TAB, TCM_SETCURSEL, 3, 0);
    CHECK(SendDlgItemMessageW(window, IDC_TAB, TCM_GETCURSEL, 0, 0) == 3);
    EnableWindow(GetDlgItem(window, IDC_CMDAPPLY), TRUE);
    SendDlgItemMessageW(window, IDC_CMDAPPLY, BM_CLICK, 0, 0);
    CHECK_FALSE(IsWindowEnabled(GetDlgItem(window, IDC_CMDAPPLY)));
    VARIANT_BOOL isLeaving = VARIANT_TRUE;
    CHECK(g_frmConfig->get_b_OKtoUnload(&isLeaving) == S_OK);
    CHECK(isLeaving == VARIANT_FALSE);
    MESSAGE("in process: " << messages << " messages from seed " << seed << " (" << keys
                           << " through the message loop's keyboard handling), " << dialogsServed
                           << " dialogs opened on the way, " << GetTickCount() - start << " ms, slowest "
                           << slowest << " ms (message " << slowestMessage << ")");
}

TEST_CASE("a window that is told once more that it is being made stays what it is") {
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const Tree windows = WindowsOf(ConfigWindow());
    for (const HWND dialog : windows.dialogs) {
        for (const LPARAM parameter : {LPARAM{0}, LPARAM{4711}})
            SendMessageW(dialog, WM_INITDIALOG, 0, parameter);
    }
    LONG handle = 0;
    CHECK(g_frmConfig->get_hWnd(&handle) == S_OK);
    CHECK(handle == g_lngConfigHwnd);
    CHECK(g_frmConfig->Show() == S_OK);
    EnableWindow(GetDlgItem(ConfigWindow(), IDC_CMDAPPLY), TRUE);
    SendDlgItemMessageW(ConfigWindow(), IDC_CMDAPPLY, BM_CLICK, 0, 0);
    CHECK_FALSE(IsWindowEnabled(GetDlgItem(ConfigWindow(), IDC_CMDAPPLY)));
}

// The dialog manager's search for an accelerator ran for ever.
TEST_CASE("a key that another program posts to a control of a hidden page is no end of the message loop") {
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(formShow);
    const Tree windows = WindowsOf(ConfigWindow());
    int hidden = 0;
    for (const HWND control : windows.controls) {
        if (!IsWindowVisible(control)) ++hidden;
        for (const UINT key : {WM_KEYDOWN, WM_CHAR, WM_SYSCHAR}) {
            MSG message{control, key, L'~', 1, 0, {}};
            if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
        }
    }
    CHECK(hidden > 20);
}
