// The tray menu's commands on their way to the engine, and the engine's events on their way to the menu.
#include <doctest.h>

#include "platform/com/variant.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

struct Commanded : Session {
    Commanded() {
        // Silent, so that the menu shows what the commands themselves do.
        engine.RaiseByItself(false);
    }

    // With every item enabled.
    void StartAsDesigned() {
        engine.State(7);
        Start();
    }

    bool Receives(const Lines& calls) {
        return WaitUntil([&] { return engine.Calls() == calls; });
    }

    // Nothing more comes for longer than a period of the menu's timer.
    bool ReceivesNothing() {
        const Lines before = engine.Calls();
        PumpFor(700);
        return engine.Calls() == before;
    }
};

}  // namespace

TEST_CASE(
    "the engine's state at the start shows in the menu: 2 and 3 alike, an unknown one changes nothing") {
    Commanded session;
    MenuLook expected = MenuLook::Other;
    SUBCASE("2") {
        session.engine.State(2);
        expected = MenuLook::Stopped;
    }
    SUBCASE("3") {
        session.engine.State(3);
        expected = MenuLook::Stopped;
    }
    SUBCASE("4") {
        session.engine.State(4);
        expected = MenuLook::Designed;
    }
    SUBCASE("It cannot be read") {
        session.engine.Fail(L"State");
        expected = MenuLook::Designed;
    }
    session.Start();
    CHECK(LookOfMenu(session.window) == expected);
    // A change of the state is learned from events only.
    session.engine.State(expected == MenuLook::Stopped ? 1 : 2);
    CHECK(LookOfMenu(session.window) == expected);
}

TEST_CASE("a command reaches the engine half a second after the menu has closed on it, not before") {
    struct Row {
        wchar_t mnemonic;
        const wchar_t* call;
        MenuLook after;
    };
    Commanded session;
    session.StartAsDesigned();
    Put(session.engine.Control(), L"Stamped", true);
    // Each row leaves the next one's item enabled.
    for (const Row& row : {Row{L'p', L" Pause", MenuLook::Designed}, Row{L't', L" Stop", MenuLook::Stopped},
                           Row{L's', L" Start", MenuLook::Running}}) {
        CAPTURE(ToAnsi(row.call));
        session.engine.ClearCalls();
        const MenuLook before = LookOfMenu(session.window);
        PopUpMenu(session.window);
        PumpFor(600);
        CHECK(session.engine.Calls() == Lines{});
        const DWORD chosen = GetTickCount();
        Choose(row.mnemonic);
        CHECK(LookOfMenu(session.window) == before);
        REQUIRE(WaitUntil([&] { return !session.engine.Calls().empty(); }));
        const std::wstring line = session.engine.Calls().front();
        CHECK(line.ends_with(row.call));
        const DWORD waited = std::stoul(line) - chosen;
        CHECK(waited >= 450);
        CHECK(WaitUntil([&] { return LookOfMenu(session.window) == row.after; }));
        CHECK(session.ReceivesNothing());
        CHECK(session.engine.Calls().size() == 1);
    }
}

TEST_CASE("Pause leaves the menu alone until the engine reports it; the menu follows every event") {
    Commanded session;
    session.Start();
    REQUIRE(LookOfMenu(session.window) == MenuLook::Running);
    Command(session.window, L'p');
    CHECK(session.Receives({L"Pause"}));
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    session.engine.Raise(L"Paused");
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    session.engine.Raise(L"Started");
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    session.engine.Raise(L"Stopped");
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    session.engine.Raise(L"Killed");
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    session.engine.Raise(L"Started");
    session.engine.RaiseByItself(true);
    Command(session.window, L'p');
    CHECK(session.Receives({L"Pause", L"Pause"}));
    CHECK(WaitUntil([&] { return LookOfMenu(session.window) == MenuLook::Stopped; }));
}

TEST_CASE("a disabled item does nothing") {
    Commanded session;
    session.engine.State(2);
    session.Start();
    for (const wchar_t mnemonic : {L't', L'p'}) {
        PopUpMenu(session.window);
        PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
        Sleep(200);
        if (OpenMenu() != nullptr) CloseMenu();
    }
    CHECK(session.ReceivesNothing());
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("an event that comes while the menu is open is in it the next time, and Esc chooses nothing") {
    Commanded session;
    session.Start();
    PopUpMenu(session.window);
    CHECK(LookOfOpenMenu() == MenuLook::Running);
    session.engine.Raise(L"Stopped");
    CloseMenu();
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    CHECK(session.ReceivesNothing());
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("Open shows the hidden window in the foreground, and its close box hides it again") {
    Commanded session;
    session.Start();
    CHECK_FALSE(session.Visible());
    Command(session.window, L'o');
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(WaitUntil([&] { return GetForegroundWindow() == session.window; }));
    PostMessageW(session.window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    CHECK(IsWindow(session.window));
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("a command that waits when the window is left by Exit is never sent") {
    Commanded session;
    session.Start();
    Command(session.window, L't');
    Command(session.window, L'x');
    REQUIRE(WaitUntil([&] { return !IsWindow(session.window); }));
    PumpFor(900);
    CHECK(session.engine.Count(L"Stop") == 0);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);
}
