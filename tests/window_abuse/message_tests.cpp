// Senseless messages to every window of the manager in this process.
#include <doctest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "tests/client_abuse/quiet_system.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"
#include "tests/window_abuse/random_messages.h"

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

// A window and all that it holds.
struct Tree {
    explicit Tree(HWND top) {
        std::vector<HWND> all{top};
        EnumChildWindows(top, TakeWindow, reinterpret_cast<LPARAM>(&all));
        for (const HWND window : all)
            (IsDialog(window) ? dialogs : controls).push_back(window);
    }

    std::vector<HWND> dialogs;
    std::vector<HWND> controls;
};

struct Shown : QuietSystem, InsideWithoutEngine {
    const ComPtr<IDispatch> config = Instance(formShow);
    const Tree windows{Window()};

    // The page, the buttons and the object behind them do what they do.
    void CheckWorks() const {
        LONG handle = 0;
        CHECK(g_frmConfig->get_hWnd(&handle) == S_OK);
        CHECK(handle == g_lngConfigHwnd);
        CHECK(g_frmConfig->Show() == S_OK);
        CHECK(IsShown());
        SendDlgItemMessageW(Window(), IDC_TAB, TCM_SETCURSEL, 3, 0);
        CHECK(SelectedTab() == 3);
        EnableWindow(ControlOf(IDC_CMDAPPLY), TRUE);
        Click(IDC_CMDAPPLY);
        CHECK_FALSE(IsWindowEnabled(ControlOf(IDC_CMDAPPLY)));
    }
};

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
        if (window == Window() || !IsDialog(window) || !IsWindowVisible(window)) continue;
        const Tree inside(window);
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

TEST_CASE_FIXTURE(Shown, "senseless messages to every window leave them working") {
    const char* const wanted = std::getenv("ABUSE_MESSAGES");
    const long messages = wanted != nullptr ? std::atol(wanted) : 1000000;
    const char* const wantedSeed = std::getenv("ABUSE_SEED");
    const uint32_t seed = wantedSeed != nullptr ? static_cast<uint32_t>(std::atol(wantedSeed)) : 20020517;
    REQUIRE(windows.dialogs.size() == 7);
    REQUIRE(windows.controls.size() >= 46);

    Chance chance(seed);
    dialogChance = &chance;
    dialogsServed = 0;
    const UINT_PTR player = SetTimer(nullptr, 0, 20, PlayUser);
    const HWND window = Window();
    const DWORD start = GetTickCount();
    DWORD slowest = 0;
    UINT slowestMessage = 0;
    long keys = 0;
    for (long i = 0; i < messages; ++i) {
        const HWND target = chance.From(windows.controls);
        MSG message = chance.OneIn(2) ? RandomDialogMessage(chance, chance.From(windows.dialogs), target)
                                      : RandomControlMessage(chance, target);
        const UINT number = message.message;
        INFO("seed " << seed << ", number " << i << ", message " << number);
        const DWORD before = GetTickCount();
        if ((number == WM_KEYDOWN || number == WM_CHAR) && chance.OneIn(2)) {
            if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
            ++keys;
        } else {
            SendMessageW(message.hwnd, number, message.wParam, message.lParam);
        }
        if (i % 500 == 0) PumpFor(1);
        if (GetTickCount() - before > slowest) {
            slowest = GetTickCount() - before;
            slowestMessage = number;
        }
        REQUIRE(IsWindow(window));
    }
    KillTimer(nullptr, player);
    for (const auto& group : {windows.dialogs, windows.controls})
        CHECK(std::ranges::all_of(group, [](HWND each) { return IsWindow(each) != FALSE; }));
    CheckWorks();
    VARIANT_BOOL isLeaving = VARIANT_TRUE;
    CHECK(g_frmConfig->get_b_OKtoUnload(&isLeaving) == S_OK);
    CHECK(isLeaving == VARIANT_FALSE);
    MESSAGE(messages << " messages from seed " << seed << " (" << keys
                     << " through the message loop's keyboard handling), " << dialogsServed
                     << " dialogs opened on the way, " << GetTickCount() - start << " ms, slowest " << slowest
                     << " ms (message " << slowestMessage << ")");
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
        for (const UINT key : {WM_KEYDOWN, WM_CHAR, WM_SYSCHAR}) {
            MSG message{target, key, L'~', 1, 0, {}};
            if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
        }
    }
    CHECK(hidden > 20);
}
