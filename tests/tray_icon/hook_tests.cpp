#include <doctest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_window.h"
#include "tests/support/shown_text.h"
#include "tray/bas_shell_notify.h"

namespace {

using Calls = std::vector<std::string>;

constexpr char kProperty[] = "OldWndProc";

LONG HookProcedure() {
    return PtrToLong(reinterpret_cast<void*>(&TrayWindowProc));
}

// A hooked configuration window that is known by its handle, and what its icon does to it.
struct ConfigWindow : TrayWindow {
    ConfigWindow() {
        HookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = window.Number();
        SetTrayWindow(this);
    }
    ~ConfigWindow() {
        SetTrayWindow(nullptr);
        UnhookTrayWindow(window.Hwnd());
        g_lngConfigHwnd = 0;
    }

    void ShowModeless() override {
        calls.push_back("Show");
        failure();
    }
    void PopupTrayMenu(bool pauseIsDefault) override {
        calls.push_back(pauseIsDefault ? "Pop up, Pause is default" : "Pop up");
        failure();
    }

    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) {
        calls.clear();
        return SendMessageA(window.Hwnd(), message, wParam, lParam);
    }

    PlainWindow window;
    Calls calls;
    std::function<void()> failure = [] {};
    BOOL isLetToForeground = TRUE;
    const ImportFake<"SetForegroundWindow", decltype(&SetForegroundWindow)> foreground{
        "user32.dll", [this](HWND hwnd) {
            CHECK(hwnd == window.Hwnd());
            calls.push_back("SetForegroundWindow");
            return isLetToForeground;
        }};
};

}  // namespace

TEST_CASE(
    "hooking puts the procedure in front and keeps the previous one as the property OldWndProc, once; where "
    "one of both cannot be done, neither is; unhooking takes the property away and, where it could, puts the "
    "previous procedure back") {
    PlainWindow window;
    const LONG before = window.Procedure();
    CHECK_FALSE(HookTrayWindow(nullptr));
    {
        const ImportFake<"SetWindowLongA", decltype(&SetWindowLongA)> fails{
            "user32.dll", [](HWND, int, LONG) { return 0L; }};
        CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    }
    {
        const ImportFake<"SetPropA", decltype(&SetPropA)> fails{"user32.dll",
                                                                [](HWND, LPCSTR, HANDLE) { return FALSE; }};
        CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    }
    CHECK(window.Procedure() == before);
    CHECK(GetPropA(window.Hwnd(), kProperty) == nullptr);

    CHECK(HookTrayWindow(window.Hwnd()));
    CHECK_FALSE(HookTrayWindow(window.Hwnd()));
    CHECK(window.Procedure() == HookProcedure());
    CHECK(HandleToLong(GetPropA(window.Hwnd(), kProperty)) == before);
    {
        const ImportFake<"RemovePropA", decltype(&RemovePropA)> kept{
            "user32.dll", [](HWND, LPCSTR) -> HANDLE { return nullptr; }};
        UnhookTrayWindow(window.Hwnd());
        CHECK(window.Procedure() == HookProcedure());
    }
    UnhookTrayWindow(window.Hwnd());
    CHECK(window.Procedure() == before);
    CHECK(GetPropA(window.Hwnd(), kProperty) == nullptr);
}

TEST_CASE_FIXTURE(
    ConfigWindow,
    "a double click on the icon shows the window; releasing the right button brings it to the "
    "foreground, then pops up the menu, whatever fails; no other gesture does anything, nor any "
    "without a window, and none reaches the window") {
    struct Row {
        std::string what;
        BOOL isLetToForeground;
        std::function<void()> failure;
    };
    const Row rows[] = {
        {"all goes well", TRUE, [] {}},
        {"Windows keeps it in the background", FALSE, [] {}},
        {"an error", TRUE, [] { RaiseError(ErrorNumber::InvalidProcedureCall); }},
        {"no memory", TRUE, [] { throw std::bad_alloc(); }},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        isLetToForeground = row.isLetToForeground;
        failure = row.failure;
        CHECK(Send(0x401, 1, 0x203) == 0);
        CHECK(calls == Calls{"Show"});
        CHECK(Send(0x401, 1, 0x205) == 0);
        CHECK(calls == Calls{"SetForegroundWindow", "Pop up, Pause is default"});
    }
    // The gesture stands in lParam alone.
    for (const WPARAM wParam : {0x1, 0x203, 0x205}) {
        for (const LPARAM gesture :
             {0x200, 0x201, 0x202, 0x204, 0x206, 0x207, 0x208, 0x209, 0, -1, 0x10203, 0x7B}) {
            CAPTURE(wParam);
            CAPTURE(gesture);
            CHECK(Send(0x401, wParam, gesture) == 0);
            CHECK(calls.empty());
        }
    }
    SetTrayWindow(nullptr);
    for (const LPARAM gesture : {0x203, 0x205}) {
        CHECK(Send(0x401, 1, gesture) == 0);
        CHECK(calls.empty());
    }
    CHECK(window.messages.empty());
}

TEST_CASE_FIXTURE(ConfigWindow,
                  "every other message, and the callback of any window but the known one, is forwarded as it "
                  "came, with its result; one for a window whose property is missing reaches nobody") {
    PlainWindow other;
    HookTrayWindow(other.Hwnd());
    int forwarded = 0;
    // Windows may have given a handle for the previous procedure, which nothing else can call.
    const ImportFake<"CallWindowProcA", decltype(&CallWindowProcA)> forward{
        "user32.dll", [&](auto... arguments) {
            ++forwarded;
            return forward.Original(arguments...);
        }};
    const auto check = [&](PlainWindow& hooked, UINT message) {
        CAPTURE(message);
        hooked.messages.clear();
        forwarded = 0;
        CHECK(SendMessageA(hooked.Hwnd(), message, 0x12345678, 0x203) == PlainWindow::kAnswer);
        REQUIRE(hooked.messages.size() == 1);
        CHECK(hooked.messages[0].message == message);
        CHECK(hooked.messages[0].wParam == 0x12345678);
        CHECK(hooked.messages[0].lParam == 0x203);
        CHECK(forwarded == 1);
        CHECK(calls.empty());
    };
    for (const UINT message : {0x400u, 0x402u, 0x500u, 0x8000u, 0xC123u})
        check(window, message);
    check(other, 0x401);
    UnhookTrayWindow(other.Hwnd());

    // The configuration window is known when it has been loaded.
    g_lngConfigHwnd = 0;
    check(window, 0x401);
    g_lngConfigHwnd = window.Number();
    CHECK(Send(0x401, 1, 0x203) == 0);
    CHECK(calls == Calls{"Show"});

    window.messages.clear();
    forwarded = 0;
    const HANDLE previous = RemovePropA(window.Hwnd(), kProperty);
    CHECK(Send(WM_USER + 5, 0, 0) == 0);
    CHECK(forwarded == 0);
    CHECK(window.messages.empty());
    SetPropA(window.Hwnd(), kProperty, previous);
}

TEST_CASE_FIXTURE(ConfigWindow,
                  "the end of another hooked window unhooks it and is not forwarded; that of the "
                  "configuration window is forwarded and unhooks nothing") {
    PlainWindow told;
    PlainWindow destroyed;
    const LONG before = told.Procedure();
    for (const PlainWindow* const other : {&told, &destroyed})
        HookTrayWindow(other->Hwnd());
    CHECK(SendMessageA(told.Hwnd(), WM_NCDESTROY, 0, 0) == 0);
    CHECK(told.Count(WM_NCDESTROY) == 0);
    CHECK(told.Procedure() == before);
    CHECK(GetPropA(told.Hwnd(), kProperty) == nullptr);
    destroyed.Destroy();
    CHECK(destroyed.Count(WM_DESTROY) == 1);
    CHECK(destroyed.Count(WM_NCDESTROY) == 0);

    Send(WM_NCDESTROY, 0, 0);
    CHECK(window.Count(WM_NCDESTROY) == 1);
    CHECK(window.Procedure() == HookProcedure());
}
