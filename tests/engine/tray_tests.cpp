// The icon in the notification area and its menu: the gestures of the user on their way to the engine, and
// the engine's events on their way back.
#include <doctest.h>

#include <utility>

#include "tests/engine/session.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

TEST_CASE_FIXTURE(StartedSession, "a closed pop-up runs the three frames, then adds the icon again") {
    CHECK(IconStory() == "add rest");
    CHECK(ShellHasIcon(window));
    // The hook in front of the window's procedure, by the property that it leaves there.
    CHECK(GetPropA(window, "OldWndProc") != nullptr);
    CHECK_FALSE(Visible());
    engine.Raise(L"Killed");
    CHECK(WaitForIcon(1));
    CHECK(IconStory() == "add rest, frame 0, frame 1, frame 2, delete, add rest");
    CHECK(ShellHasIcon(window));
    // The engine heard nothing of it.
    CHECK(engine.Calls() == Lines{});
}

TEST_CASE_FIXTURE(
    StartedSession,
    "the menu opens over the hidden window and follows the engine's events, an open one the next "
    "time; a disabled item does nothing") {
    PopUpMenu(window);
    CHECK(ShownMenu() == kRunningMenu);
    CHECK(GetForegroundWindow() == window);
    CHECK_FALSE(Visible());
    engine.Raise(L"Stopped");
    CloseMenu();
    CHECK(MenuOf(window) == kStoppedMenu);
    for (const wchar_t mnemonic : {L't', L'p'}) {
        PopUpMenu(window);
        PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
        Sleep(200);
        if (OpenMenu() != nullptr) CloseMenu();
    }
    // Longer than a period of the menu's timer.
    PumpFor(700);
    CHECK(engine.Calls() == Lines{});

    for (const auto& [event, menu] : {std::pair{L"Started", kRunningMenu},
                                      {L"Paused", kStoppedMenu},
                                      {L"Killed", kStoppedMenu},
                                      {L"Started", kRunningMenu}}) {
        engine.Raise(event);
        CHECK(MenuOf(window) == menu);
    }
    Command(window, L'p');
    // As the engine reports it.
    CHECK(WaitUntil([&] { return MenuOf(window) == kStoppedMenu; }));
    CHECK(engine.Calls() == Lines{L"Pause"});
}

TEST_CASE_FIXTURE(StartedSession,
                  "Open shows the window in the foreground, and its close box hides it with what is "
                  "not applied") {
    Command(window, L'o');
    CHECK(WaitUntil([&] { return Visible(); }));
    CHECK(WaitUntil([&] { return GetForegroundWindow() == window; }));
    ChangeSpeed();
    PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    CHECK(WaitUntil([&] { return !Visible(); }));
    CHECK(manager.Window() == window);
    CHECK(manager.Text(L"txtSpeed") == L"7");
    CHECK(Marked());
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    CHECK(engine.Calls() == Lines{});
    CHECK(engine.Connections() == 1);
    CHECK(IconStory() == "add rest");
}
