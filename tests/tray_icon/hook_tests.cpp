#include <doctest.h>

#include <algorithm>
#include <functional>
#include <new>

#include "platform/automation_error.h"
#include "tests/support/plain_window.h"
#include "tests/support/test_window.h"
#include "tests/tray_icon/hook_calls.h"
#include "tray/bas_shell_notify.h"

namespace {

using Calls = std::vector<std::string>;

const Calls kUnhooking{"GetProp OldWndProc", "RemoveProp OldWndProc", "SetWindowLong -4"};

Calls Forwarding(UINT message) {
    return {"GetProp OldWndProc", "CallWindowProc " + std::to_string(message)};
}

LONG HookProcedure() {
    return PtrToLong(reinterpret_cast<void*>(&TrayWindowProc));
}

// A window that is not hooked yet.
struct BareWindow {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookCalls hook;
};

// A hooked configuration window that is known by its handle; what its icon does to it is among the calls.
struct ConfigWindow : BareWindow, TrayWindow {
    ConfigWindow() {
        HookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = window.Number();
        SetTrayWindow(this);
        hook.Forget();
    }
    ~ConfigWindow() {
        SetTrayWindow(nullptr);
        UnhookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = 0;
    }

    void ShowModeless() override {
        hook.calls.push_back("Show");
        failure();
    }
    void PopupTrayMenu(bool pauseIsDefault) override {
        hook.calls.push_back(pauseIsDefault ? "Pop up, Pause is default" : "Pop up");
        failure();
    }

    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) {
        hook.Forget();
        return SendMessageA(window.Hwnd(), message, wParam, lParam);
    }

    std::function<void()> failure = [] {};
};

}  // namespace

TEST_CASE_FIXTURE(
    BareWindow,
    "hooking puts the procedure in front and keeps the previous one as the property OldWndProc, once") {
    CHECK(HookTrayWindow(window.Hwnd()));
    CHECK(hook.calls == Calls{"GetProp OldWndProc", "SetWindowLong -4", "SetProp OldWndProc"});
    CHECK(hook.windows == std::vector<HWND>(3, window.Hwnd()));
    CHECK(hook.values == std::vector<LONG>{0, HookProcedure(), before});
    CHECK(window.Procedure() == HookProcedure());

    hook.Forget();
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
}

TEST_CASE_FIXTURE(BareWindow, "a hook that cannot be made, or whose property cannot be stored, leaves none") {
    for (const std::string function : {"SetWindowLong", "SetProp"}) {
        CAPTURE(function);
        hook.failing = {function};
        CHECK_FALSE(HookTrayWindow(window.Hwnd()));
        CHECK(window.Procedure() == before);
        CHECK(SendMessageA(window.Hwnd(), WM_USER + 9, 0, 0) == PlainWindow::kAnswer);
    }
    hook.failing.clear();
    CHECK_FALSE(HookTrayWindow(nullptr));
    window.Destroy();
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
}

TEST_CASE_FIXTURE(
    BareWindow,
    "unhooking takes the property away and, where it could, puts the previous procedure back, once") {
    HookTrayWindow(window.Hwnd());
    hook.Forget();
    hook.failing = {"RemoveProp"};
    UnhookTrayWindow(window.Hwnd());
    CHECK(hook.calls == Calls{"GetProp OldWndProc", "RemoveProp OldWndProc"});
    CHECK(window.Procedure() == HookProcedure());

    hook.Forget();
    hook.failing.clear();
    UnhookTrayWindow(window.Hwnd());
    CHECK(hook.calls == kUnhooking);
    CHECK(hook.values == std::vector<LONG>{0, 0, before});
    CHECK(window.Procedure() == before);
    CHECK(GetPropA(window.Hwnd(), "OldWndProc") == nullptr);

    hook.Forget();
    UnhookTrayWindow(window.Hwnd());
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
}

TEST_CASE("a Unicode window gets its messages through the hook and its own procedure back") {
    TestWindow window({});
    REQUIRE(IsWindowUnicode(window.Hwnd()));
    const LONG before = GetWindowLongW(window.Hwnd(), GWL_WNDPROC);
    REQUIRE(HookTrayWindow(window.Hwnd()));
    SetWindowTextW(window.Hwnd(), L"Calvane");
    wchar_t caption[20] = L"";
    GetWindowTextW(window.Hwnd(), caption, 20);
    CHECK(std::wstring(caption) == L"Calvane");
    UnhookTrayWindow(window.Hwnd());
    CHECK(GetWindowLongW(window.Hwnd(), GWL_WNDPROC) == before);
}

TEST_CASE_FIXTURE(ConfigWindow,
                  "a double click on the icon shows the window; releasing the right button brings it to the "
                  "foreground, then pops up the menu, whatever fails; without a window nothing happens") {
    struct Row {
        std::string what;
        TrayWindow* trayWindow;
        std::set<std::string> failing;
        std::function<void()> failure;
    };
    const Row rows[] = {
        {"all goes well", this, {}, [] {}},
        {"Windows keeps it in the background", this, {"SetForegroundWindow"}, [] {}},
        {"an error", this, {}, [] { RaiseError(ErrorNumber::InvalidProcedureCall); }},
        {"no memory", this, {}, [] { throw std::bad_alloc(); }},
        {"no window", nullptr, {}, [] {}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        SetTrayWindow(row.trayWindow);
        hook.failing = row.failing;
        failure = row.failure;
        CHECK(Send(0x401, 1, 0x203) == 0);
        CHECK(hook.calls == (row.trayWindow != nullptr ? Calls{"Show"} : Calls{}));
        CHECK(Send(0x401, 1, 0x205) == 0);
        CHECK(
            hook.calls ==
            (row.trayWindow != nullptr ? Calls{"SetForegroundWindow", "Pop up, Pause is default"} : Calls{}));
        CHECK((hook.windows.empty() || hook.windows[0] == window.Hwnd()));
    }
    CHECK(window.messages.empty());
}

TEST_CASE_FIXTURE(ConfigWindow, "no other gesture does anything, and none reaches the window") {
    // The gesture stands in lParam alone.
    for (const WPARAM wParam : {0x1, 0x203, 0x205}) {
        for (const LPARAM gesture :
             {0x200, 0x201, 0x202, 0x204, 0x206, 0x207, 0x208, 0x209, 0, -1, 0x10203, 0x7B}) {
            CAPTURE(wParam);
            CAPTURE(gesture);
            CHECK(Send(0x401, wParam, gesture) == 0);
            CHECK(hook.calls.empty());
        }
    }
    CHECK(window.messages.empty());
}

TEST_CASE_FIXTURE(
    ConfigWindow,
    "every other message of the configuration window is forwarded as it came, with its result") {
    for (const UINT message : {0x400u, 0x402u, 0x500u, 0x8000u, 0xC123u}) {
        CAPTURE(message);
        window.messages.clear();
        CHECK(Send(message, 0x12345678, 0x203) == PlainWindow::kAnswer);
        REQUIRE(window.messages.size() == 1);
        CHECK(window.messages[0].message == message);
        CHECK(window.messages[0].wParam == 0x12345678);
        CHECK(window.messages[0].lParam == 0x203);
        CHECK(hook.calls == Forwarding(message));
    }
}

TEST_CASE_FIXTURE(ConfigWindow, "the callback of any window but the known one is forwarded, gesture or not") {
    SUBCASE("until the configuration window is known") {
        g_lngConfigHwnd = 0;
        CHECK(Send(0x401, 1, 0x203) == PlainWindow::kAnswer);
        CHECK(hook.calls == Forwarding(0x401));
        g_lngConfigHwnd = window.Number();
        CHECK(Send(0x401, 1, 0x203) == 0);
        CHECK(hook.calls == Calls{"Show"});
        CHECK(window.Count(0x401) == 1);
    }
    SUBCASE("another window") {
        PlainWindow other;
        HookTrayWindow(other.Hwnd());
        hook.Forget();
        CHECK(SendMessageA(other.Hwnd(), 0x401, 1, 0x205) == PlainWindow::kAnswer);
        CHECK(hook.calls == Forwarding(0x401));
        CHECK(other.Count(0x401) == 1);
        UnhookTrayWindow(other.Hwnd());
    }
}

TEST_CASE_FIXTURE(ConfigWindow,
                  "the end of another hooked window unhooks it and is not forwarded; that of the "
                  "configuration window is forwarded and unhooks nothing") {
    PlainWindow other;
    HookTrayWindow(other.Hwnd());
    hook.Forget();
    SUBCASE("its message alone") {
        CHECK(SendMessageA(other.Hwnd(), WM_NCDESTROY, 0, 0) == 0);
        CHECK(hook.calls == kUnhooking);
        CHECK(other.Procedure() != HookProcedure());
    }
    SUBCASE("destroyed") {
        other.Destroy();
        CHECK(std::count(hook.calls.begin(), hook.calls.end(), "RemoveProp OldWndProc") == 1);
        CHECK(other.Count(WM_DESTROY) == 1);
    }
    CHECK(other.Count(WM_NCDESTROY) == 0);

    Send(WM_NCDESTROY, 0, 0);
    CHECK(window.Count(WM_NCDESTROY) == 1);
    CHECK(hook.calls == Forwarding(WM_NCDESTROY));
    CHECK(window.Procedure() == HookProcedure());
}

TEST_CASE_FIXTURE(ConfigWindow,
                  "a message for a window whose property is missing returns 0 and calls nobody") {
    hook.failing = {"GetProp"};
    CHECK(Send(WM_USER + 5, 0, 0) == 0);
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
    CHECK(window.messages.empty());
    hook.failing.clear();
}
