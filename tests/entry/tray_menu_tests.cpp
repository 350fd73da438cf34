// The tray menu of one window after another.
#include <doctest.h>

#include <string>

#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"
#include "tray/tray_menu.h"

namespace {

std::string shownMenu;

// Notes which of the engine's three items can be chosen, "Start Stop Pause", and chooses none.
BOOL WINAPI NoteMenu(HMENU menu, UINT, int, int, HWND, TPMPARAMS*) {
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        shownMenu += (GetMenuState(menu, item, MF_BYCOMMAND) & MF_GRAYED) == 0 ? '+' : '-';
    return FALSE;
}

std::string Menu() {
    shownMenu.clear();
    const ImportPatch track("user32.dll", "TrackPopupMenuEx", &NoteMenu);
    SendMessageW(Window(), kTrayCallback, 1, WM_RBUTTONUP);
    return shownMenu;
}

}  // namespace

TEST_CASE("a window made again has the menu as designed where its engine tells no state") {
    using Change = void (*)(EngineScript & engine);
    constexpr Change kChanges[] = {
        [](EngineScript& engine) { engine.results["CreateInstance"] = REGDB_E_CLASSNOTREG; },
        [](EngineScript& engine) { engine.results["CreatePopup"] = E_FAIL; },
        [](EngineScript& engine) { engine.results["State"] = E_FAIL; },
        [](EngineScript& engine) { engine.state = 7; },
    };
    for (const Change change : kChanges) {
        Inside inside;
        StartJournal journal;
        journal.engine.script.state = 2;
        inside.Instance(FormHide);
        CHECK(Menu() == "+--");

        g_frmConfig->Unload();
        change(journal.engine.script);
        g_frmConfig->Handle();
        CHECK(Menu() == "+++");
    }
}
