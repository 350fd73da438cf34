// The tray menu's commands on their way to the engine, and the engine's events on their way to the menu.
#include <doctest.h>

#include <utility>

#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

struct Commanded : Session {
    Commanded() {
        // Silent, so that the menu shows what the commands themselves do.
        engine.RaiseByItself(false);
    }

    // Nothing more comes for longer than a period of the menu's timer.
    bool ReceivesNothing() {
        const Lines before = engine.Calls();
        PumpFor(700);
        return engine.Calls() == before;
    }
};

}  // namespace

TEST_CASE("a command reaches the engine half a second after the menu has closed on it, not before") {
    struct Row {
        wchar_t mnemonic;
        const wchar_t* call;
        MenuLook after;
    };
    Commanded session;
    // With every item enabled.
    session.engine.State(7);
    session.Start();
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
    CHECK(WaitUntil([&] { return session.engine.Calls() == Lines{L"Pause"}; }));
    CHECK(LookOfMenu(session.window) == MenuLook::Running);
    const std::pair<const wchar_t*, MenuLook> events[] = {{L"Paused", MenuLook::Stopped},
                                                          {L"Started", MenuLook::Running},
                                                          {L"Stopped", MenuLook::Stopped},
                                                          {L"Killed", MenuLook::Stopped},
                                                          {L"Started", MenuLook::Running}};
    for (const auto& [event, look] : events) {
        session.engine.Raise(event);
        CHECK(LookOfMenu(session.window) == look);
    }
    session.engine.RaiseByItself(true);
    Command(session.window, L'p');
    CHECK(WaitUntil([&] { return LookOfMenu(session.window) == MenuLook::Stopped; }));
}

TEST_CASE("a disabled item and Esc do nothing, and an open menu has an event the next time") {
    Commanded session;
    session.Start();
    PopUpMenu(session.window);
    CHECK(LookOfOpenMenu() == MenuLook::Running);
    session.engine.Raise(L"Stopped");
    CloseMenu();
    CHECK(LookOfMenu(session.window) == MenuLook::Stopped);
    for (const wchar_t mnemonic : {L't', L'p'}) {
        PopUpMenu(session.window);
        PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
        Sleep(200);
        if (OpenMenu() != nullptr) CloseMenu();
    }
    CHECK(session.ReceivesNothing());
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("Open shows the hidden window in the foreground, and its close box hides it with all that it has") {
    Session session;
    session.Start();
    REQUIRE(WaitForIcon());
    CHECK_FALSE(session.Visible());
    Command(session.window, L'o');
    CHECK(WaitUntil([&] { return session.Visible(); }));
    CHECK(WaitUntil([&] { return GetForegroundWindow() == session.window; }));
    for (const UINT message : {WM_CLOSE, WM_SYSCOMMAND}) {
        CAPTURE(message);
        session.manager.Instance(formShow);
        session.Spin(L"udbSpeed", true);
        PostMessageW(session.window, message, message == WM_SYSCOMMAND ? SC_CLOSE : 0, 0);
        CHECK(WaitUntil([&] { return !session.Visible(); }));
    }
    CHECK(session.manager.Window() == session.window);
    CHECK(session.manager.Text(L"txtSpeed") == L"8");
    CHECK(session.Marked());
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    CHECK(session.engine.Calls() == Lines{});
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    CHECK(IconStory() == "add rest");
}
