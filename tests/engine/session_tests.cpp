// What the delivered manager, its engine and the taskbar do together: one path for each capability.
#include <doctest.h>

#include "tests/engine/session.h"
#include "tests/engine_control/menu_items.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

TEST_CASE(
    "a window creates an engine object with its handle, a reference and mode 2, and takes leave with the "
    "same arguments when it exits; so does the one made after it") {
    Session session;
    session.Open();
    const HWND first = session.window;
    // Loading asks for the log once; nothing else comes by itself.
    const Lines calls = session.engine.Calls();
    CHECK(calls == Lines{calls.at(0), L"State", L"LogFile"});
    const std::wstring start = L"CreatePopup hwnd=" + std::to_wstring(HandleToLong(first)) + L" form=";
    CHECK(calls[0].starts_with(start));
    CHECK(calls[0].ends_with(L" mode=2"));
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    REQUIRE(WaitForIcon());
    session.engine.ClearCalls();
    Command(first, L'x');
    REQUIRE(WaitUntil([&] { return !IsWindow(first); }));
    const std::wstring left = session.engine.Calls().at(0);
    CHECK(session.engine.Calls().size() == 1);
    CHECK(left.substr(left.find(L' ')) + L" mode=2" == calls[0].substr(calls[0].find(L' ')));
    CHECK(session.engine.Popups() == 0);
    CHECK(session.engine.Connections() == 0);
    CHECK(session.engine.State() == 1);
    CHECK_FALSE(ShellHasIcon(first));

    session.Open();
    CHECK(session.window != first);
    CHECK(session.engine.Count(L"CreatePopup") == 1);
    CHECK(session.engine.Connections() == 1);
    CHECK(WaitForIcon());
    CHECK(IconStory() == "add, delete, add");
    PostGesture(session.window, WM_LBUTTONDBLCLK);
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(MenuOf(session.window) == kRunning);
}

TEST_CASE_FIXTURE(StartedSession,
                  "Apply reaches the engine as one ReloadSettings after the store has been written") {
    engine.Set(L"WatchValue", L"Software\\Calvane\\Settings\\txtSpeed");
    ChangeSpeed();
    CHECK(StoredSpeed() == L"1000");
    Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !Marked(); }));
    PumpFor(300);
    CHECK(engine.Calls() == Lines{L"ReloadSettings txtSpeed=800"});
}

TEST_CASE_FIXTURE(StartedSession,
                  "a closed pop-up runs the three frames, then adds the icon again; a thousand in a burst "
                  "leave one icon and a manager that works") {
    CHECK(ShellHasIcon(window));
    engine.Raise(L"Killed");
    CHECK(WaitForIcon(1));
    CHECK(IconStory() == "add, change, change, change, delete, add");
    // The engine heard nothing of it.
    CHECK(engine.Calls() == Lines{});

    for (int i = 0; i < 1000; ++i)
        engine.Raise(L"Killed");
    CHECK(WaitForIcon(2));
    CHECK(engine.Connections() == 1);
    CheckWorks();
}

TEST_CASE_FIXTURE(StartedSession,
                  "the menu opens over the hidden window and follows the engine's events, an open one the "
                  "next time; its commands reach the engine") {
    CHECK(PopUpMenu(window) == kRunning);
    CHECK(GetForegroundWindow() == window);
    CHECK_FALSE(Visible());
    engine.Raise(L"Stopped");
    CloseMenu();
    CHECK(MenuOf(window) == kStopped);
    Command(window, L's');
    CHECK(WaitUntil([&] { return MenuOf(window) == kRunning; }));
    Command(window, L'p');
    // As the engine reports it.
    CHECK(WaitUntil([&] { return MenuOf(window) == kStopped; }));
    CHECK(engine.Calls() == Lines{L"Start", L"Pause"});
}
