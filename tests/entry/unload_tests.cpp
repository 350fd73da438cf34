// In what order the window takes leave, what comes in meanwhile, and what of it the next one finds.
#include <doctest.h>

#include <string>

#include "options/resource.h"
#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"

namespace {

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

TEST_CASE_FIXTURE(
    Journalled,
    "an unloading lets go of the engine, then of the icon, and takes leave while the window is still there") {
    Instance(FormHide);
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
    CHECK(journal.First("engine:Popup gone") >= 0);
    CHECK(journal.First("engine:Popup gone") < journal.First("icon:2"));
    CHECK(journal.First("icon:2") < journal.First("engine:ReleasePopup"));
    CHECK(wasThere);
    CHECK(journal.engine.script.configHwnd == handle);
    CHECK(journal.engine.script.configForm == reference);
    CHECK_FALSE(IsWindow(Window()));
}

TEST_CASE_FIXTURE(
    Journalled,
    "a load forgets what was to be started or stopped, and no tick outlives the window before it") {
    Instance(FormHide);
    const TrayCommands commands;
    const auto& script = journal.engine.script;
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        commands.Give(item);
    g_frmConfig->Unload();
    g_frmConfig->Handle();
    commands.Tick();
    CHECK(script.Count("Start") + script.Count("Stop") + script.Count("Pause") == 0);
    commands.Give(mnuPauseKiller);
    commands.Tick();
    CHECK(script.Count("Start") + script.Count("Stop") == 0);
    CHECK(script.Count("Pause") == 1);
}

TEST_CASE_FIXTURE(Journalled,
                  "the About page that is asked for while an unload waits for the engine is shown") {
    Instance(FormHide);
    LetIn("ReleasePopup", [&] { Instance(kShowAbout); });
    g_frmConfig->Unload();
    // Asking for the handle would make the window.
    REQUIRE(journal.Count("window") == 2);
    CHECK(IsShown());
    CHECK(SelectedTab() == 5);
}

TEST_CASE_FIXTURE(Journalled, "the window behind one that was unloaded in its first load takes gestures") {
    LetIn("LogFile", [] { g_frmConfig->Unload(); });
    Instance(FormHide);
    CHECK(g_frmConfig->Handle() == g_lngConfigHwnd);
    REQUIRE(IsWindow(Window()));
    CHECK_FALSE(IsShown());
    SendMessageW(Window(), kTrayCallback, 1, WM_LBUTTONDBLCLK);
    CHECK(IsShown());
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "after the exit a client that still holds Config gets a new window") {
    const auto config = Instance(FormHide);
    const HWND first = Window();
    g_frmConfig->put_b_OKtoUnload(VARIANT_TRUE);
    SendMessageW(first, WM_CLOSE, 0, 0);
    REQUIRE_FALSE(IsWindow(first));
    SUBCASE("by showing it") {
        CHECK(Instance(formShow).Get() == config.Get());
        CHECK(IsShown());
    }
    SUBCASE("by reading its handle") {
        VARIANT handle;
        CHECK(g_oConfig->get_ConfigHwnd(&handle) == S_OK);
        CHECK(handle.lVal == g_lngConfigHwnd);
    }
    wchar_t speed[8]{};
    GetWindowTextW(ControlOf(IDC_TXTSPEED), speed, 8);
    CHECK(speed == std::wstring(L"6"));
    ComPtr<IDispatch> icon;
    CHECK(g_frmConfig->get_m_oShellIcon(&icon) == S_OK);
    CHECK(icon != nullptr);
    // The close box only hides the new one.
    VARIANT_BOOL mayUnload = VARIANT_TRUE;
    CHECK(g_frmConfig->get_b_OKtoUnload(&mayUnload) == S_OK);
    CHECK(mayUnload == VARIANT_FALSE);
    SendMessageW(Window(), WM_CLOSE, 0, 0);
    CHECK(IsWindow(Window()));
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "reading the members of an unloaded window does not load it") {
    Instance(FormHide);
    g_frmConfig->Unload();
    VARIANT icon;
    CHECK(g_oConfig->get_ShellIconClass(&icon) == S_OK);
    CHECK(icon.vt == VT_DISPATCH);
    CHECK(icon.pdispVal == nullptr);
    CHECK_FALSE(IsShown());
    Instance(FormHide);
    CHECK(FindWindowW(L"#32770", L"Calvane") == nullptr);
}

// The message may wait in the queue while the window goes, and its handle may be that of the next window.
TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a gesture over the icon that comes in behind an unloading makes no window") {
    Instance(FormHide);
    const HWND window = Window();
    g_frmConfig->Unload();
    REQUIRE_FALSE(IsWindow(window));
    for (const LPARAM gesture : {WM_LBUTTONDBLCLK, WM_RBUTTONUP}) {
        CHECK(TrayWindowProc(window, kTrayCallback, 1, gesture) == 0);
        CHECK(FindWindowW(nullptr, L"Calvane") == nullptr);
    }
}
