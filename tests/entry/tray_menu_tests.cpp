// The tray menu of one window after another.
#include <doctest.h>

#include <string>

#include "tests/entry/inside.h"
#include "tests/entry/start_journal.h"
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
    SendMessageW(reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd)), kTrayCallback, 1,
                 WM_RBUTTONUP);
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
        for (const LONG state : {1L, 2L}) {
            CAPTURE(state);
            Inside inside;
            StartJournal journal;
            journal.engine.script.state = state;
            inside.Instance(FormHide);
            CHECK(Menu() == (state == 1 ? "-++" : "+--"));

            g_frmConfig->Unload();
            change(journal.engine.script);
            LONG window = 0;
            CHECK(g_frmConfig->get_hWnd(&window) == S_OK);
            CHECK(Menu() == "+++");
        }
    }
}
