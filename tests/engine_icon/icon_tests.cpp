// The icon in the notification area, under the real mouse and through closed pop-ups.
#include <doctest.h>

#include <shellapi.h>

#include "platform/com/variant.h"
#include "tests/engine/screen.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// A look of the icon, and when it was first seen so.
struct Seen {
    DWORD after;
    HWND icon;
    IconLook look;
};

// Writes down every change of the icon, pictures that are half drawn left out.
struct IconWatch {
    void Watch(DWORD milliseconds) {
        const DWORD until = GetTickCount() + milliseconds;
        while (static_cast<LONG>(until - GetTickCount()) > 0) {
            for (const HWND icon : ShownIcons()) {
                const IconLook look = LookOf(icon);
                if (look == IconLook::Other) continue;
                if (seen.empty() || seen.back().icon != icon || seen.back().look != look)
                    seen.push_back({GetTickCount() - start, icon, look});
            }
            Sleep(5);
        }
    }

    std::string Looks() const {
        std::string looks;
        for (const Seen& one : seen)
            looks += (looks.empty() ? "" : ", ") + NameOf(one.look);
        return looks;
    }

    const DWORD start = GetTickCount();
    std::vector<Seen> seen;
};

// A time after the beginning, as exact as a screen that another process draws can be.
void CheckAbout(DWORD after, DWORD expected) {
    CAPTURE(expected);
    CHECK(after >= expected - 30);
    CHECK(after < expected + 220);
}

struct WithIcon : Session {
    WithIcon() {
        Start();
        icon = WaitForIcon();
        REQUIRE(icon != nullptr);
    }

    HWND icon = nullptr;
};

const std::string kWholeRun = "rest, frame 0, frame 1, frame 2, rest";

}  // namespace

TEST_CASE("The icon is there within a second of the start, with the resting picture, once") {
    Session session;
    const DWORD start = GetTickCount();
    session.Start();
    const DWORD made = GetTickCount();
    const HWND icon = WaitForIcon();
    REQUIRE(icon != nullptr);
    CHECK(GetTickCount() - made < 1000);
    CHECK(GetTickCount() - start < 10000);
    CHECK(ShellHasIcon(session.window));
    CHECK(WaitUntil([&] { return LookOf(icon) == IconLook::Rest; }, 2000));
    CHECK(ShownIcons() == std::vector<HWND>{icon});
    // The hook in front of the window's procedure, by the property that it leaves there.
    CHECK(GetPropA(session.window, "OldWndProc") != nullptr);
    CHECK_FALSE(session.Visible());
}

TEST_CASE("A closed pop-up runs the three frames a quarter of a second apart, then adds the icon anew") {
    WithIcon session;
    REQUIRE(WaitUntil([&] { return LookOf(session.icon) == IconLook::Rest; }, 2000));
    IconWatch watch;
    session.engine.Raise(L"Killed");
    watch.Watch(1600);
    REQUIRE(watch.Looks() == kWholeRun);
    CheckAbout(watch.seen[1].after, 250);
    CheckAbout(watch.seen[2].after, 500);
    CheckAbout(watch.seen[3].after, 750);
    // Adding an icon takes the shell up to half a second.
    CHECK(watch.seen[4].after >= 970);
    for (size_t i = 1; i < 4; ++i)
        CHECK(watch.seen[i].icon == session.icon);
    CHECK(watch.seen[4].icon != session.icon);
    CHECK_FALSE(IsWindow(session.icon));
    CHECK(ShownIcons().size() == 1);
    CHECK(ShellHasIcon(session.window));
    // The engine heard nothing of it.
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("A second closed pop-up 300 ms after the first starts the frames over") {
    WithIcon session;
    REQUIRE(WaitUntil([&] { return LookOf(session.icon) == IconLook::Rest; }, 2000));
    IconWatch watch;
    session.engine.Raise(L"Killed");
    watch.Watch(300);
    session.engine.Raise(L"Killed");
    const DWORD second = GetTickCount() - watch.start;
    watch.Watch(1700);
    REQUIRE(watch.Looks() == kWholeRun);
    CheckAbout(watch.seen[1].after, 250);
    CheckAbout(watch.seen[2].after, second + 500);
    CheckAbout(watch.seen[3].after, second + 750);
    CHECK(watch.seen[4].after >= second + 970);
    CHECK(watch.seen[4].icon != session.icon);
    CHECK(ShownIcons().size() == 1);
}

TEST_CASE("A closed pop-up is shown whichever notice is chosen") {
    WithIcon session;
    for (const wchar_t* const notice : {L"chkBeep", L"chkPlaySound"}) {
        session.Press(notice);
        const HWND before = WaitForIcon();
        session.engine.Raise(L"Killed");
        CHECK(WaitUntil([&] { return !IsWindow(before); }));
        CHECK(WaitForIcon() != nullptr);
    }
}

TEST_CASE("The window going away in the middle of the frames leaves no icon") {
    WithIcon session;
    session.engine.Raise(L"Killed");
    Sleep(350);
    SUBCASE("ReleaseConfig") {
        session.manager.Control()->ReleaseConfig();
        CHECK(session.manager.WaitForEnd());
    }
    SUBCASE("Exit") {
        Command(session.window, L'x');
        CHECK(WaitUntil([&] { return !IsWindow(session.window); }));
    }
    SUBCASE("Log-off") {
        CHECK(SendMessageW(session.window, WM_QUERYENDSESSION, 0, static_cast<LPARAM>(ENDSESSION_LOGOFF)) ==
              TRUE);
        SendMessageW(session.window, WM_ENDSESSION, TRUE, static_cast<LPARAM>(ENDSESSION_LOGOFF));
        CHECK_FALSE(IsWindow(session.window));
    }
    Sleep(900);
    CHECK(ShownIcons().empty());
    CHECK_FALSE(ShellHasIcon(session.window));
}

TEST_CASE("A storm of closed pop-ups leaves one icon and a window that answers") {
    WithIcon session;
    const DWORD start = GetTickCount();
    for (int i = 0; i < 200; ++i)
        session.engine.Raise(L"Killed");
    CHECK(GetTickCount() - start < 10000);
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    CHECK(WaitUntil([&] { return !IsWindow(session.icon); }));
    PumpFor(600);
    const HWND icon = WaitForIcon();
    REQUIRE(icon != nullptr);
    CHECK(WaitUntil([&] { return LookOf(icon) == IconLook::Rest; }, 2000));
    // One last run was left, and it is over.
    PumpFor(600);
    CHECK(ShownIcons() == std::vector<HWND>{icon});
}

TEST_CASE("A real double click opens the window; single clicks, presses and movements do nothing") {
    WithIcon session;
    MoveMouseTo({600, 600});
    MoveMouseTo(CenterOf(session.icon));
    LeftClick();
    Sleep(GetDoubleClickTime() + 100);
    MouseButton(MOUSEEVENTF_MIDDLEDOWN);
    MouseButton(MOUSEEVENTF_MIDDLEUP);
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONDOWN, WM_RBUTTONDBLCLK,
                               WM_MBUTTONDBLCLK, WM_CONTEXTMENU, WM_NULL})
        PostGesture(session.window, message);
    session.Settle();
    Sleep(200);
    CHECK_FALSE(session.Visible());
    CHECK(OpenMenu() == nullptr);

    DoubleClick();
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(WaitUntil([&] { return GetForegroundWindow() == session.window; }));
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("A real right click brings the window to the front and opens the menu, Pause being its bold item") {
    WithIcon session;
    // The pictures of menus to compare with are taken first.
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    MoveMouseTo(CenterOf(session.icon));
    MouseButton(MOUSEEVENTF_RIGHTDOWN);
    Sleep(200);
    CHECK(OpenMenu() == nullptr);
    MouseButton(MOUSEEVENTF_RIGHTUP);
    REQUIRE(WaitForMenu() != nullptr);
    CHECK(GetForegroundWindow() == session.window);
    CHECK_FALSE(session.Visible());
    TypeKey(VK_ESCAPE);
    CHECK(MenuCloses());

    // A click elsewhere closes it too, and chooses nothing.
    RightClick();
    REQUIRE(WaitForMenu() != nullptr);
    MoveMouseTo({900, 700});
    LeftClick();
    CHECK(MenuCloses());

    // Another right click while it is open opens no second one.
    MoveMouseTo(CenterOf(session.icon));
    RightClick();
    REQUIRE(WaitForMenu() != nullptr);
    PostGesture(session.window, WM_RBUTTONUP);
    session.Settle();
    const HWND menu = OpenMenu();
    CHECK(FindWindowExW(nullptr, menu, L"#32768", nullptr) == nullptr);
    TypeKey(VK_ESCAPE);
    CHECK(MenuCloses());
    CHECK(OpenMenu() == nullptr);
    CHECK_FALSE(session.Visible());
    PumpFor(700);
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("An item of the menu is chosen by the real mouse and by the real keyboard") {
    WithIcon session;
    session.engine.RaiseByItself(false);
    MoveMouseTo(CenterOf(session.icon));
    RightClick();
    HWND menu = WaitForMenu();
    REQUIRE(menu != nullptr);
    // Stop is the second of the five items and two separators.
    RECT area{};
    GetWindowRect(menu, &area);
    MoveMouseTo({area.left + 60, area.top + 28});
    LeftClick();
    CHECK(MenuCloses());
    CHECK(WaitUntil([&] { return session.engine.Calls() == Lines{L"Stop"}; }));

    MoveMouseTo(CenterOf(session.icon));
    RightClick();
    REQUIRE(WaitForMenu() != nullptr);
    TypeKey(VK_UP);
    TypeKey(VK_UP);
    TypeKey(VK_RETURN);
    CHECK(MenuCloses());
    CHECK(WaitUntil([&] { return session.Visible(); }));
}

TEST_CASE("An icon that a new taskbar does not know is added again") {
    WithIcon session;
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = session.window;
    data.uID = 1;
    REQUIRE(Shell_NotifyIconW(NIM_DELETE, &data));
    CHECK_FALSE(ShellHasIcon(session.window));
    PostMessageW(HWND_BROADCAST, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    CHECK(WaitUntil([&] { return ShellHasIcon(session.window); }));
    CHECK(WaitForIcon() != nullptr);

    // Without a window there is none to add.
    session.manager.Control()->ReleaseConfig();
    CHECK(session.manager.WaitForEnd());
    PostMessageW(HWND_BROADCAST, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    PumpFor(300);
    CHECK(ShownIcons().empty());
}
