// Senseless messages to every window of the manager in this process.
#include <doctest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "tests/client_abuse/quiet_system.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"
#include "tests/window_abuse/random_messages.h"

namespace {

BOOL CALLBACK TakeWindow(HWND window, LPARAM parameter) {
    reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    return TRUE;
}

bool IsDialog(HWND window) {
    return ClassOf(window) == L"#32770";
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

// A message to one of the dialogs or controls.
MSG RandomMessage(Chance& chance, const std::vector<HWND>& dialogs, const std::vector<HWND>& controls) {
    const HWND control = chance.From(controls);
    return chance.OneIn(2) ? RandomDialogMessage(chance, chance.From(dialogs), control)
                           : RandomControlMessage(chance, control);
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
        if (window == Window() || !IsDialog(window) || !IsWindowVisible(window)) continue;
        const Tree inside(window);
        for (int i = 0; i < 200 && IsWindow(window); ++i) {
            const MSG message = RandomMessage(*dialogChance, {window}, inside.controls);
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
        MSG message = RandomMessage(chance, windows.dialogs, windows.controls);
        const UINT number = message.message;
        INFO("seed " << seed << ", number " << i << ", message " << number);
        const DWORD before = GetTickCount();
        // Half of the keys come through the message loop's keyboard handling.
        if ((number == WM_KEYDOWN || number == WM_CHAR) && chance.OneIn(2)) {
            if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
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
        for (const UINT key : {WM_KEYDOWN, WM_CHAR, WM_SYSCHAR}) {
            MSG message{target, key, L'~', 1, 0, {}};
            if (!g_frmConfig->IsFormMessage(message)) DispatchMessageW(&message);
        }
    }
    CHECK(hidden > 20);
}
