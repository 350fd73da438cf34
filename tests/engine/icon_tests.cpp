// The icon in the notification area, through its gestures and through closed pop-ups.
#include <doctest.h>

#include <shellapi.h>

#include "tests/engine/session.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

struct WithIcon : Session {
    WithIcon() {
        Start();
        REQUIRE(WaitForIcon());
    }
};

}  // namespace

TEST_CASE("a closed pop-up runs the three frames a quarter of a second apart, then adds the icon again") {
    WithIcon session;
    CHECK(IconStory() == "add rest");
    CHECK(ShellHasIcon(session.window));
    // The hook in front of the window's procedure, by the property that it leaves there.
    CHECK(GetPropA(session.window, "OldWndProc") != nullptr);
    CHECK_FALSE(session.Visible());

    const DWORD start = GetTickCount();
    session.engine.Raise(L"Killed");
    CHECK(WaitForIconAfter(1));
    CHECK(IconStory() == "add rest, frame 0, frame 1, frame 2, delete, add rest");
    // Or later on a busy machine.
    constexpr DWORD kInterval = 250;
    constexpr DWORD kTick = 16;  // of the system's clock
    const std::vector<ShellCall> calls = ShellCalls();
    REQUIRE(calls.size() >= 5);
    for (DWORD i = 0; i < 4; ++i)
        CHECK(calls[1 + i].time - start >= (i + 1) * kInterval - kTick);
    CHECK(ShellHasIcon(session.window));
    // The engine heard nothing of it.
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("a double click opens the window; single clicks, presses and movements do nothing") {
    WithIcon session;
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_MBUTTONDOWN, WM_MBUTTONUP,
                               WM_RBUTTONDOWN, WM_RBUTTONDBLCLK, WM_MBUTTONDBLCLK, WM_CONTEXTMENU, WM_NULL})
        PostGesture(session.window, message);
    session.Settle();
    CHECK_FALSE(session.Visible());
    CHECK(OpenMenu() == nullptr);

    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
        PostGesture(session.window, message);
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(WaitUntil([&] { return GetForegroundWindow() == session.window; }));
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("a right click brings the window to the front and opens the menu, Pause being its bold item") {
    WithIcon session;
    PostGesture(session.window, WM_RBUTTONDOWN);
    session.Settle();
    CHECK(OpenMenu() == nullptr);
    PopUpMenu(session.window);
    CHECK(LookOfOpenMenu() == MenuLook::Running);
    CHECK(GetForegroundWindow() == session.window);
    CHECK_FALSE(session.Visible());
    TypeKey(VK_ESCAPE);
    CHECK(MenuCloses());

    // A click elsewhere closes it too, and chooses nothing.
    const HWND menu = PopUpMenu(session.window);
    RECT area{};
    GetWindowRect(menu, &area);
    MoveMouseTo({area.left - 20, area.top - 20});
    LeftClick();
    CHECK(MenuCloses());

    // Another right click while it is open opens no second one.
    PopUpMenu(session.window);
    PostGesture(session.window, WM_RBUTTONUP);
    session.Settle();
    CHECK(FindWindowExW(nullptr, OpenMenu(), L"#32768", nullptr) == nullptr);
    TypeKey(VK_ESCAPE);
    CHECK(MenuCloses());
    CHECK(OpenMenu() == nullptr);
    CHECK_FALSE(session.Visible());
    PumpFor(700);
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("an item of the menu is chosen by the real mouse and by the real keyboard") {
    WithIcon session;
    session.engine.RaiseByItself(false);
    session.engine.Raise(L"Stopped");
    const HWND menu = PopUpMenu(session.window);
    // The first item is right below the upper edge, whatever the font.
    RECT area{};
    GetWindowRect(menu, &area);
    MoveMouseTo({(area.left + area.right) / 2, area.top + 10});
    LeftClick();
    CHECK(MenuCloses());
    CHECK(WaitUntil([&] { return session.engine.Calls() == Lines{L"Start"}; }));

    PopUpMenu(session.window);
    TypeKey(VK_UP);
    TypeKey(VK_UP);
    TypeKey(VK_RETURN);
    CHECK(MenuCloses());
    CHECK(WaitUntil([&] { return session.Visible(); }));
}

TEST_CASE("an icon that a new taskbar does not know is added again") {
    WithIcon session;
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = session.window;
    data.uID = 1;
    REQUIRE(Shell_NotifyIconW(NIM_DELETE, &data));
    CHECK_FALSE(ShellHasIcon(session.window));
    PostMessageW(HWND_BROADCAST, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    CHECK(WaitUntil([] { return IconStory() == "add rest, add rest"; }));
    CHECK(ShellHasIcon(session.window));
}
