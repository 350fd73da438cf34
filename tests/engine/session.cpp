#include "tests/engine/session.h"

#include <doctest.h>

#include <cstdio>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/other_process.h"

// What another process returned is the first thing to know of a call that failed.
REGISTER_EXCEPTION_TRANSLATOR(const AutomationError& error) {
    char text[40];
    std::snprintf(text, sizeof(text), "Automation error 0x%08lX", static_cast<unsigned long>(error.Code()));
    return text;
}

void Session::Open() {
    window = manager.Window();
    apply = manager.Control(L"cmdApply");
}

void Session::Start() {
    Open();
    engine.ClearCalls();
}

void Session::CheckWorks(bool hasEngine) {
    manager.Instance(formShow);
    CHECK(Visible());
    const std::wstring before = manager.Text(L"txtSpeed");
    const std::wstring stored = Setting(L"Settings", L"txtSpeed");
    const size_t reloads = hasEngine ? engine.Count(L"ReloadSettings") : 0;
    Spin(L"udbSpeed", before != L"10");
    CHECK(manager.Text(L"txtSpeed") != before);
    CHECK(Marked());
    const DWORD start = GetTickCount();
    Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !Marked(); }));
    CHECK(GetTickCount() - start < kHang);
    CHECK(Setting(L"Settings", L"txtSpeed") != stored);
    if (hasEngine) CHECK(engine.Count(L"ReloadSettings") == reloads + 1);
    Press(L"cmdRefreshLog");
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !Visible(); }));
    Command(window, L'o');
    CHECK(WaitUntil([&] { return Visible(); }));
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

void Session::Spin(const wchar_t* upDown, bool up) {
    ClickArrow(manager.Control(upDown), up);
}

void Session::Apply() {
    EnableWindow(apply, TRUE);
    Press(L"cmdApply");
}

HWND Session::OpenDialog(const wchar_t* button) {
    PostMessageW(manager.Control(button), BM_CLICK, 0, 0);
    return WaitForDialog();
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

bool Session::CancelDialog(HWND dialog) {
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    return WaitUntil([&] { return !IsWindow(dialog) && IsWindowEnabled(window) != FALSE; });
}
