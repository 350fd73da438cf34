// In what order the window takes leave, what comes in meanwhile, and what of it the next one finds.
#include <doctest.h>

#include <atomic>
#include <thread>

#include "options/resource.h"
#include "tests/engine_control/menu_items.h"
#include "tests/entry/journalled.h"
#include "tests/pairs/clock.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

// The user of the tray menu, and the clock of its commands.
struct TrayUser : Journalled {
    // Opens the menu over the icon and chooses. Returns which of the engine's three items could be chosen.
    std::string Choose(UINT item) {
        m_chosen = item;
        SendMessageW(Window(), kTrayCallback, 0, WM_RBUTTONUP);
        return m_shown;
    }

    Clock clock;

private:
    UINT m_chosen = 0;
    std::string m_shown;
    const ImportFake<"TrackPopupMenuEx", decltype(&TrackPopupMenuEx)> m_menu{
        "user32.dll", [this](HMENU menu, UINT, int, int, HWND, LPTPMPARAMS) {
            CHECK(GetMenuDefaultItem(menu, FALSE, GMDI_USEDISABLED) == mnuPauseKiller);
            m_shown = EnabledItems(menu);
            return static_cast<BOOL>(m_chosen);
        }};
};

}  // namespace

TEST_CASE_FIXTURE(
    Journalled,
    "an unloading lets go of the engine, then of the icon, and takes leave while the window is still there") {
    Instance(FormHide);
    const LONG handle = g_lngConfigHwnd;
    const LONG reference = engine.script.configForm;
    bool wasThere = false;
    engine.script.within["ReleasePopup"] = [&] {
        Note("engine:ReleasePopup");
        wasThere = IsWindow(Window()) != FALSE;
    };
    g_frmConfig->Unload();
    CHECK(First("engine:Popup gone") >= 0);
    CHECK(First("engine:Popup gone") < First("icon:2"));
    CHECK(First("icon:2") < First("engine:ReleasePopup"));
    CHECK(wasThere);
    CHECK(engine.script.configHwnd == handle);
    CHECK(engine.script.configForm == reference);
    CHECK_FALSE(IsWindow(Window()));
}

// While this thread handles a message that somebody else has sent, Windows lets no call out to the engine.
TEST_CASE_FIXTURE(Journalled, "the engine hears once of a window that goes with the session") {
    int refused = 0;
    int taken = 0;
    engine.script.within["ReleasePopup"] = [&] {
        const bool isSent = (InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND;
        ++(isSent ? refused : taken);
        engine.script.results["ReleasePopup"] = isSent ? RPC_E_CANTCALLOUT_ININPUTSYNCCALL : S_OK;
    };
    Instance(FormHide);
    const HWND window = Window();
    CHECK(SendMessageW(window, WM_QUERYENDSESSION, 0, 0) == TRUE);
    std::atomic<bool> isHandled = false;
    const std::jthread session([&] {
        SendMessageW(window, WM_ENDSESSION, TRUE, 0);
        isHandled = true;
    });
    CHECK(PumpUntil([&] { return isHandled && taken > 0; }));
    PumpFor(50);
    CHECK(refused > 0);
    CHECK(taken == 1);
    CHECK_FALSE(IsWindow(window));
    CHECK(engine.popup == nullptr);
}

TEST_CASE_FIXTURE(TrayUser,
                  "a window made again has the menu as designed where it has no engine to tell a state") {
    engine.script.state = 2;
    Instance(FormHide);
    CHECK(Choose(0) == kStopped);
    g_frmConfig->Unload();
    engine.script.results["CreateInstance"] = REGDB_E_CLASSNOTREG;
    g_frmConfig->Handle();
    CHECK(Choose(0) == kDesigned);
}

TEST_CASE_FIXTURE(
    TrayUser, "a load forgets what was to be started or stopped, and no tick outlives the window before it") {
    Instance(FormHide);
    const auto& script = engine.script;
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        Choose(item);
    g_frmConfig->Unload();
    g_frmConfig->Handle();
    clock.Tick();
    clock.TickLate();
    CHECK(script.Count("Start") + script.Count("Stop") + script.Count("Pause") == 0);
    Choose(mnuPauseKiller);
    clock.Tick();
    CHECK(script.Count("Start") + script.Count("Stop") == 0);
    CHECK(script.Count("Pause") == 1);
}

TEST_CASE_FIXTURE(
    InsideWithoutEngine,
    "after the exit nothing but showing the window or reading its handle makes a new one, which is loaded "
    "and is the same client's") {
    const auto config = Instance(FormHide);
    const HWND first = Window();
    g_frmConfig->put_b_OKtoUnload(VARIANT_TRUE);
    SendMessageW(first, WM_CLOSE, 0, 0);
    REQUIRE_FALSE(IsWindow(first));
    Variant icon;
    CHECK(g_oConfig->get_ShellIconClass(icon.Receive()) == S_OK);
    CHECK(icon.Value().vt == VT_DISPATCH);
    CHECK(icon.Value().pdispVal == nullptr);
    CHECK_FALSE(IsShown());
    SUBCASE("by showing it") {
        CHECK(Instance(formShow).Get() == config.Get());
        CHECK(IsShown());
    }
    SUBCASE("by reading its handle") {
        Instance(FormHide);
        // A message may wait in the queue while a window goes, and its handle may be that of the next one.
        for (const LPARAM gesture : {WM_LBUTTONDBLCLK, WM_RBUTTONUP})
            CHECK(TrayWindowProc(first, kTrayCallback, 1, gesture) == 0);
        REQUIRE(FindWindowW(L"#32770", L"Calvane") == nullptr);
        VARIANT handle;
        CHECK(g_oConfig->get_ConfigHwnd(&handle) == S_OK);
        CHECK(handle.lVal == g_lngConfigHwnd);
    }
    wchar_t speed[8]{};
    GetWindowTextW(ControlOf(IDC_TXTSPEED), speed, 8);
    CHECK(speed == std::wstring(L"6"));
    CHECK(g_oConfig->get_ShellIconClass(icon.Receive()) == S_OK);
    CHECK(icon.Value().pdispVal != nullptr);
    // The close box only hides the new one.
    CHECK(SendMessageW(Window(), WM_CLOSE, 0, 0) == 0);
    CHECK(IsWindow(Window()));
}
