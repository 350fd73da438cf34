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

LONG HookProcedure() {
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(&TrayWindowProc));
}

struct FakeTrayWindow final : TrayWindow {
    FakeTrayWindow() { SetTrayWindow(this); }
    ~FakeTrayWindow() { SetTrayWindow(nullptr); }

    void ShowModeless() override {
        ++shown;
        if (failure) failure();
    }

    void PopupTrayMenu(bool pauseIsDefault) override {
        ++popped;
        lastPauseIsDefault = pauseIsDefault;
        if (failure) failure();
    }

    int shown = 0;
    int popped = 0;
    bool lastPauseIsDefault = false;
    std::function<void()> failure;
};

// A hooked configuration window that is known by its handle.
struct HookedConfigWindow {
    HookedConfigWindow() {
        HookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = window.Number();
    }
    ~HookedConfigWindow() {
        UnhookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = 0;
    }

    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) {
        return SendMessageA(window.Hwnd(), message, wParam, lParam);
    }

    PlainWindow window;
};

}  // namespace

TEST_CASE("hooking puts the procedure in front and keeps the previous one as the property OldWndProc") {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookCalls hook;
    CHECK(HookTrayWindow(window.Hwnd()));

    CHECK(hook.calls == Calls{"GetProp OldWndProc", "SetWindowLong -4", "SetProp OldWndProc"});
    CHECK(hook.windows == std::vector<HWND>(3, window.Hwnd()));
    CHECK(hook.values == std::vector<LONG>{0, HookProcedure(), before});
    CHECK(window.Procedure() == HookProcedure());
}

TEST_CASE("a window is never hooked twice") {
    PlainWindow window;
    REQUIRE(HookTrayWindow(window.Hwnd()));
    HookCalls hook;
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
}

TEST_CASE("a window whose procedure cannot be replaced is left alone") {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookCalls hook;
    hook.failSetWindowLong = true;
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    CHECK(hook.calls == Calls{"GetProp OldWndProc", "SetWindowLong -4"});
    CHECK(window.Procedure() == before);
}

TEST_CASE("hooking no window at all fails") {
    CHECK_FALSE(HookTrayWindow(nullptr));
    PlainWindow window;
    window.Destroy();
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
}

TEST_CASE("a hook whose property cannot be stored is undone at once") {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookCalls hook;
    hook.failSetProp = true;
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    CHECK(window.Procedure() == before);
    CHECK(SendMessageA(window.Hwnd(), WM_USER + 9, 0, 0) == PlainWindow::kAnswer);
}

TEST_CASE("unhooking takes the property away and then puts the previous procedure back") {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookTrayWindow(window.Hwnd());
    HookCalls hook;
    UnhookTrayWindow(window.Hwnd());

    CHECK(hook.calls == Calls{"GetProp OldWndProc", "RemoveProp OldWndProc", "SetWindowLong -4"});
    CHECK(hook.values == std::vector<LONG>{0, 0, before});
    CHECK(window.Procedure() == before);
    CHECK(GetPropA(window.Hwnd(), "OldWndProc") == nullptr);
}

TEST_CASE("unhooking a window that is not hooked does nothing") {
    PlainWindow window;
    const LONG before = window.Procedure();
    HookCalls hook;
    UnhookTrayWindow(window.Hwnd());
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
    CHECK(window.Procedure() == before);
}

TEST_CASE("the previous procedure is not put back when the property cannot be removed") {
    PlainWindow window;
    HookTrayWindow(window.Hwnd());
    {
        HookCalls hook;
        hook.failRemoveProp = true;
        UnhookTrayWindow(window.Hwnd());
        CHECK(hook.calls == Calls{"GetProp OldWndProc", "RemoveProp OldWndProc"});
    }
    CHECK(window.Procedure() == HookProcedure());
    UnhookTrayWindow(window.Hwnd());
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

TEST_CASE("a double click on the icon shows the window") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    HookCalls hook;
    CHECK(config.Send(0x401, 1, 0x203) == 0);
    CHECK(tray.shown == 1);
    CHECK(tray.popped == 0);
    CHECK(hook.calls.empty());
    CHECK(config.window.Count(0x401) == 0);
}

TEST_CASE(
    "releasing the right button on the icon brings the window to the foreground, then pops up the menu") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    HookCalls hook;
    bool wasForegroundFirst = false;
    tray.failure = [&] { wasForegroundFirst = hook.calls == Calls{"SetForegroundWindow"}; };
    CHECK(config.Send(0x401, 1, 0x205) == 0);
    CHECK(tray.popped == 1);
    CHECK(tray.lastPauseIsDefault);
    CHECK(tray.shown == 0);
    CHECK(wasForegroundFirst);
    CHECK(hook.windows == std::vector<HWND>{config.window.Hwnd()});
    CHECK(config.window.Count(0x401) == 0);
}

TEST_CASE("the menu pops up although another program keeps the foreground") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    HookCalls hook;
    hook.refuseForeground = true;
    CHECK(config.Send(0x401, 1, 0x205) == 0);
    CHECK(hook.calls == Calls{"SetForegroundWindow"});
    CHECK(tray.popped == 1);
}

TEST_CASE("no other gesture does anything, and none reaches the window") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    HookCalls hook;
    for (const LPARAM gesture :
         {0x200, 0x201, 0x202, 0x204, 0x206, 0x207, 0x208, 0x209, 0, -1, 0x10203, 0x7B}) {
        CAPTURE(gesture);
        CHECK(config.Send(0x401, 1, gesture) == 0);
    }
    CHECK(tray.shown == 0);
    CHECK(tray.popped == 0);
    CHECK(hook.calls.empty());
    CHECK(config.window.messages.empty());
}

TEST_CASE("the gesture stands in lParam alone") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    config.Send(0x401, 0x203, 0);
    config.Send(0x401, 0x205, 0);
    CHECK(tray.shown + tray.popped == 0);
}

TEST_CASE("every other message of the configuration window is forwarded as it came, with its result") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    HookCalls hook;
    for (const UINT message : {0x400u, 0x402u, 0x500u, 0x8000u, 0xC123u}) {
        CAPTURE(message);
        config.window.messages.clear();
        hook.Forget();
        CHECK(config.Send(message, 0x12345678, 0x203) == PlainWindow::kAnswer);
        REQUIRE(config.window.messages.size() == 1);
        CHECK(config.window.messages[0].message == message);
        CHECK(config.window.messages[0].wParam == 0x12345678);
        CHECK(config.window.messages[0].lParam == 0x203);
        CHECK(hook.calls == Calls{"GetProp OldWndProc", "CallWindowProc " + std::to_string(message)});
    }
    CHECK(tray.shown + tray.popped == 0);
}

TEST_CASE("an error while the window is shown or the menu popped up is ignored") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    tray.failure = [] { RaiseError(ErrorNumber::InvalidProcedureCall); };
    CHECK(config.Send(0x401, 1, 0x203) == 0);
    CHECK(config.Send(0x401, 1, 0x205) == 0);
    tray.failure = [] { throw std::bad_alloc(); };
    CHECK(config.Send(0x401, 1, 0x203) == 0);
    CHECK(config.Send(0x401, 1, 0x205) == 0);
    CHECK(tray.shown == 2);
    CHECK(tray.popped == 2);
    CHECK(config.Send(WM_USER + 5, 0, 0) == PlainWindow::kAnswer);
}

TEST_CASE("a gesture without a window to act on does nothing") {
    HookedConfigWindow config;
    CHECK(config.Send(0x401, 1, 0x203) == 0);
    CHECK(config.Send(0x401, 1, 0x205) == 0);
    CHECK(config.window.messages.empty());
}

TEST_CASE("until the configuration window is known, its callback is forwarded like any other message") {
    PlainWindow window;
    FakeTrayWindow tray;
    HookTrayWindow(window.Hwnd());
    CHECK(SendMessageA(window.Hwnd(), 0x401, 1, 0x203) == PlainWindow::kAnswer);
    CHECK(window.Count(0x401) == 1);
    CHECK(tray.shown == 0);

    g_lngConfigHwnd = window.Number();
    CHECK(SendMessageA(window.Hwnd(), 0x401, 1, 0x203) == 0);
    CHECK(window.Count(0x401) == 1);
    CHECK(tray.shown == 1);
    g_lngConfigHwnd = 0;
    UnhookTrayWindow(window.Hwnd());
}

TEST_CASE("another window's callback is forwarded even when it is a gesture") {
    HookedConfigWindow config;
    FakeTrayWindow tray;
    PlainWindow other;
    HookTrayWindow(other.Hwnd());
    CHECK(SendMessageA(other.Hwnd(), 0x401, 1, 0x205) == PlainWindow::kAnswer);
    CHECK(other.Count(0x401) == 1);
    CHECK(tray.popped == 0);
    UnhookTrayWindow(other.Hwnd());
}

TEST_CASE("the end of another hooked window unhooks it and is not forwarded") {
    HookedConfigWindow config;
    PlainWindow other;
    HookTrayWindow(other.Hwnd());
    HookCalls hook;
    CHECK(SendMessageA(other.Hwnd(), WM_NCDESTROY, 0, 0) == 0);
    CHECK(hook.calls == Calls{"GetProp OldWndProc", "RemoveProp OldWndProc", "SetWindowLong -4"});
    CHECK(other.Count(WM_NCDESTROY) == 0);
    CHECK(other.Procedure() != HookProcedure());
}

TEST_CASE("a hooked window that is destroyed leaves no hook behind") {
    PlainWindow other;
    HookTrayWindow(other.Hwnd());
    HookCalls hook;
    other.Destroy();
    CHECK(std::count(hook.calls.begin(), hook.calls.end(), "RemoveProp OldWndProc") == 1);
    CHECK(other.Count(WM_DESTROY) == 1);
    CHECK(other.Count(WM_NCDESTROY) == 0);
}

TEST_CASE("the end of the configuration window itself is forwarded and unhooks nothing") {
    HookedConfigWindow config;
    HookCalls hook;
    config.Send(WM_NCDESTROY, 0, 0);
    CHECK(config.window.Count(WM_NCDESTROY) == 1);
    CHECK(hook.calls == Calls{"GetProp OldWndProc", "CallWindowProc 130"});
    CHECK(config.window.Procedure() == HookProcedure());
}

TEST_CASE("a message for a window whose property is missing returns 0 and calls nobody") {
    HookedConfigWindow config;
    HookCalls hook;
    hook.failGetProp = true;
    CHECK(config.Send(WM_USER + 5, 0, 0) == 0);
    CHECK(hook.calls == Calls{"GetProp OldWndProc"});
    CHECK(config.window.messages.empty());
}
