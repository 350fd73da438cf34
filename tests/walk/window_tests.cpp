// The window by keyboard alone, with real keys, and how it goes while a dialog is open.
#include <doctest.h>

#include <commctrl.h>

#include <functional>

#include "lists/resource.h"
#include "tests/support/automation.h"
#include "tests/support/shown_text.h"
#include "tests/walk/user.h"

namespace {

void SendKey(BYTE key, DWORD flags = 0) {
    const DWORD extended = key == VK_NEXT ? KEYEVENTF_EXTENDEDKEY : 0;
    keybd_event(key, static_cast<BYTE>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)), extended | flags, 0);
}

struct Keyboard : User {
    bool IsInFront() {
        return GetWindowThreadProcessId(GetForegroundWindow(), nullptr) ==
               GetWindowThreadProcessId(Program().Window(), nullptr);
    }

    // Presses a key, with another held where there is one, and waits for what it does. On a busy machine the
    // screen may tell late that the window of an earlier test has lost the focus, which Wine takes to mean
    // this one: the keys are lost then, and pressed again when it is in front, as somebody would.
    bool Press(BYTE held, BYTE key, const std::function<bool()>& effect) {
        bool isPressed = false;
        return WaitUntil([&] {
            if (isPressed && effect()) return true;
            if (!IsInFront()) {
                Program().Instance(formShow);
                Sleep(200);
                isPressed = false;
            } else if (!isPressed) {
                if (held != 0) SendKey(held);
                SendKey(key);
                SendKey(key, KEYEVENTF_KEYUP);
                if (held != 0) SendKey(held, KEYEVENTF_KEYUP);
                isPressed = true;
            }
            return false;
        });
    }
};

}  // namespace

TEST_CASE("by keyboard alone an address is added and applied, and the window hidden") {
    Keyboard user;
    CHECK(user.Press(VK_CONTROL, VK_NEXT,
                     [&] { return SendMessageW(user.Find(L"tab"), TCM_GETCURSEL, 0, 0) == 1; }));
    HWND dialog = nullptr;
    REQUIRE(user.Press(VK_MENU, 'U', [&] {
        dialog = FindWindowW(L"#32770", L"Add Web Site URL");
        return dialog != nullptr && GetForegroundWindow() == dialog;
    }));
    CHECK(user.Press(0, 'A', [&] { return ShownText(GetDlgItem(dialog, IDC_TXTURL)) == L"http://a"; }));
    CHECK(user.Press(0, VK_RETURN, [&] { return !IsWindow(dialog); }));
    CHECK(user.Excluded() == Rows{L"http://a"});
    CHECK(user.Press(VK_MENU, 'A', [&] { return !user.CanPress(L"cmdApply"); }));
    CHECK(Setting(L"Exclude", L"0") == L"http://a");
    CHECK(user.Press(0, VK_ESCAPE, [&] { return !user.IsWindowShown(); }));
}

// A dialog of Windows' own, with a message loop of its own.
TEST_CASE("the window goes with its open dialog, the next one is whole, and ReleaseConfig ends it likewise") {
    User user;
    Manager& manager = user.Program();
    const HWND window = manager.Window();
    HWND dialog = user.Open(L"cmdSoundFile", L"Select a Sound File");
    CHECK_FALSE(IsWindowEnabled(window));
    Put(manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindow(window) && !IsWindow(dialog); }));
    CHECK(manager.Running());

    manager.Instance(formShow);
    CHECK(IsWindowEnabled(manager.Window()));
    dialog = user.Open(L"cmdSoundFile", L"Select a Sound File");
    // On a busy machine the process ends before its reply has come.
    manager.Control()->ReleaseConfig();
    CHECK(manager.WaitForEnd());
    CHECK_FALSE(IsWindow(dialog));
    manager.LetGo();
}
