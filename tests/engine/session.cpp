#include "tests/engine/session.h"

#include <doctest.h>

#include "tests/support/automation.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"

void Session::Open() {
    window = manager.Window();
    apply = manager.Control(L"cmdApply");
}

void Session::Start() {
    Open();
    engine.ClearCalls();
}

void Session::CheckWorks() {
    manager.Instance(formShow);
    CHECK(Visible());
    const std::wstring stored = Setting(L"Settings", L"txtSpeed");
    ChangeSpeed();
    const std::wstring changed = manager.Text(L"txtSpeed");
    // The close box hides the window with what is not applied.
    PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    CHECK(WaitUntil([&] { return !Visible(); }));
    Command(window, L'o');
    CHECK(WaitUntil([&] { return Visible() && GetForegroundWindow() == window; }));
    CHECK(manager.Window() == window);
    CHECK(manager.Text(L"txtSpeed") == changed);
    CHECK(Marked());
    CHECK(Setting(L"Settings", L"txtSpeed") == stored);
    const DWORD start = GetTickCount();
    Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !Marked(); }));
    CHECK(GetTickCount() - start < kHang);
    CHECK(Setting(L"Settings", L"txtSpeed") != stored);
    Press(L"cmdRefreshLog");
    CHECK(WaitForIcon());
    CHECK(ShellHasIcon(window));
}

// Posted: a program that is in the midst of another's SendMessage may not call a third by COM.
void Session::Press(const wchar_t* button) {
    PostMessageW(manager.Control(button), BM_CLICK, 0, 0);
    Settle();
}

// A client's call stands behind the posted messages in the manager's queue.
void Session::Settle() {
    Get(manager.Form().Get(), L"Caption");
}

void Session::ChangeSpeed() {
    ClickArrow(manager.Control(L"udbSpeed"), true);
}

HWND Session::WaitForDialog() {
    HWND dialog = nullptr;
    WaitUntil([&] {
        while ((dialog = FindWindowExW(nullptr, dialog, L"#32770", nullptr)) != nullptr) {
            if (GetWindow(dialog, GW_OWNER) == window && IsWindowVisible(dialog)) return true;
        }
        return false;
    });
    return dialog;
}

StartedSession::StartedSession() {
    Start();
    REQUIRE(WaitForIcon());
}
