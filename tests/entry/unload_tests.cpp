// In what order the window takes leave, and what of it the next one finds.
#include <doctest.h>

#include <shellapi.h>

#include "tests/entry/inside.h"
#include "tests/entry/start_journal.h"

namespace {

HWND Window() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
}

UINT chosen = 0;
TIMERPROC tick = nullptr;
UINT_PTR timer = 0;

BOOL WINAPI Choose(HMENU, UINT, int, int, HWND, LPTPMPARAMS) {
    return static_cast<BOOL>(chosen);
}

UINT_PTR WINAPI TakeTimer(HWND, UINT_PTR id, UINT, TIMERPROC procedure) {
    timer = id;
    tick = procedure;
    return 1;
}

// Commands of the tray menu, chosen without a user, and the ticks that carry them out, without a clock.
struct TrayCommands {
    ImportPatch menu{"user32.dll", "TrackPopupMenuEx", &Choose};
    ImportPatch clock{"user32.dll", "SetTimer", &TakeTimer};

    void Give(UINT item) const {
        chosen = item;
        SendMessageW(Window(), kTrayCallback, 0, WM_RBUTTONUP);
    }
    void Tick() const {
        REQUIRE(static_cast<bool>(tick));
        tick(Window(), WM_TIMER, timer, 0);
    }
};

}  // namespace

TEST_CASE(
    "an unloading lets go of the engine, then of the icon, and takes leave while the window is still there") {
    Inside inside;
    StartJournal journal;
    inside.Instance(FormHide);
    const LONG handle = g_lngConfigHwnd;
    const LONG reference = journal.engine.script.configForm;
    bool wasThere = false;
    journal.engine.script.within["ReleasePopup"] = [&] {
        StartJournal::Note("engine:ReleasePopup");
        wasThere = IsWindow(Window()) != FALSE;
    };

    SUBCASE("and the engine returns") {}
    SUBCASE("and the engine fails") {
        journal.engine.script.results["ReleasePopup"] = E_FAIL;
    }
    g_frmConfig->Unload();
    REQUIRE(journal.Count("engine:Popup gone") == 1);
    REQUIRE(journal.Count("icon:2") == 1);
    REQUIRE(journal.Count("engine:ReleasePopup") == 1);
    CHECK(journal.First("engine:Popup gone") < journal.First("icon:2"));
    CHECK(journal.First("icon:2") < journal.First("engine:ReleasePopup"));
    CHECK(wasThere);
    CHECK(journal.engine.script.configHwnd == handle);
    CHECK(journal.engine.script.configForm == reference);
    CHECK_FALSE(IsWindow(Window()));
}

TEST_CASE("a load forgets what was to be started or stopped, and no tick outlives the window before it") {
    Inside inside;
    StartJournal journal;
    inside.Instance(FormHide);
    {
        const TrayCommands commands;
        for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
            commands.Give(item);
        g_frmConfig->Unload();
        g_frmConfig->Handle();
        const auto& script = journal.engine.script;
        CHECK(script.Count("Start") + script.Count("Stop") + script.Count("Pause") == 0);

        commands.Tick();
        CHECK(script.Count("Start") + script.Count("Stop") + script.Count("Pause") == 0);
        commands.Give(mnuPauseKiller);
        commands.Tick();
        CHECK(script.Count("Start") + script.Count("Stop") == 0);
        CHECK(script.Count("Pause") == 1);
    }
}

// The message may wait in the queue while the window goes, and its handle may be that of the next window.
TEST_CASE("a gesture over the icon that comes in behind an unloading makes no window") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const HWND window = Window();
    g_frmConfig->Unload();
    REQUIRE_FALSE(IsWindow(window));
    for (const LPARAM gesture : {WM_LBUTTONDBLCLK, WM_RBUTTONUP}) {
        CHECK(TrayWindowProc(window, kTrayCallback, 1, gesture) == 0);
        CHECK(FindWindowW(nullptr, L"Calvane") == nullptr);
    }
}
