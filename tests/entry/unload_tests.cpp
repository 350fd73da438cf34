// In what order the window takes leave, what comes in meanwhile, and what of it the next one finds.
#include <doctest.h>

#include <atomic>
#include <thread>

#include "options/resource.h"
#include "tests/entry/journalled.h"
#include "tests/support/message_pump.h"

namespace {

// The tray menu and its commands' timer, played.
class TrayMenuPlayed {
public:
    // Opens the menu over the icon and chooses. Returns which of the engine's three items, "Start Stop
    // Pause", could be chosen.
    std::string Choose(UINT item) {
        m_chosen = item;
        SendMessageW(Window(), kTrayCallback, 0, WM_RBUTTONUP);
        return m_shown;
    }
    void Tick() const {
        REQUIRE(static_cast<bool>(m_tick));
        m_tick(Window(), WM_TIMER, m_timer, 0);
    }

private:
    UINT m_chosen = 0;
    std::string m_shown;
    TIMERPROC m_tick = nullptr;
    UINT_PTR m_timer = 0;
    const ImportFake<"TrackPopupMenuEx", decltype(&TrackPopupMenuEx)> m_menu{
        "user32.dll", [this](HMENU menu, UINT, int, int, HWND, LPTPMPARAMS) {
            m_shown.clear();
            for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
                m_shown += (GetMenuState(menu, item, MF_BYCOMMAND) & MF_GRAYED) == 0 ? '+' : '-';
            return static_cast<BOOL>(m_chosen);
        }};
    const ImportFake<"SetTimer", decltype(&SetTimer)> m_clock{
        "user32.dll", [this](HWND, UINT_PTR id, UINT, TIMERPROC procedure) {
            m_timer = id;
            m_tick = procedure;
            return UINT_PTR{1};
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

    SUBCASE("and the engine returns") {}
    SUBCASE("and the engine fails") {
        engine.script.results["ReleasePopup"] = E_FAIL;
    }
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

TEST_CASE_FIXTURE(Journalled,
                  "a window made again has the menu as designed where it has no engine to tell a state") {
    TrayMenuPlayed menu;
    engine.script.state = 2;
    Instance(FormHide);
    CHECK(menu.Choose(0) == "+--");
    g_frmConfig->Unload();
    engine.script.results["CreateInstance"] = REGDB_E_CLASSNOTREG;
    g_frmConfig->Handle();
    CHECK(menu.Choose(0) == "+++");
}

TEST_CASE_FIXTURE(
    Journalled,
    "a load forgets what was to be started or stopped, and no tick outlives the window before it") {
    Instance(FormHide);
    TrayMenuPlayed menu;
    const auto& script = engine.script;
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        menu.Choose(item);
    g_frmConfig->Unload();
    g_frmConfig->Handle();
    menu.Tick();
    CHECK(script.Count("Start") + script.Count("Stop") + script.Count("Pause") == 0);
    menu.Choose(mnuPauseKiller);
    menu.Tick();
    CHECK(script.Count("Start") + script.Count("Stop") == 0);
    CHECK(script.Count("Pause") == 1);
}

TEST_CASE_FIXTURE(Journalled,
                  "the About page that is asked for while an unload waits for the engine is shown") {
    Instance(FormHide);
    LetIn("ReleasePopup", [&] { Instance(kShowAbout); });
    g_frmConfig->Unload();
    // Asking for the handle would make the window.
    REQUIRE(Count("window") == 2);
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
    SendMessageW(Window(), WM_CLOSE, 0, 0);
    CHECK(IsWindow(Window()));
}

// A message may wait in the queue while the window goes, and its handle may be that of the next window.
TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "neither reading the members of an unloaded window nor a gesture over its icon makes one") {
    Instance(FormHide);
    const HWND window = Window();
    g_frmConfig->Unload();
    REQUIRE_FALSE(IsWindow(window));
    VARIANT icon;
    CHECK(g_oConfig->get_ShellIconClass(&icon) == S_OK);
    CHECK(icon.vt == VT_DISPATCH);
    CHECK(icon.pdispVal == nullptr);
    CHECK_FALSE(IsShown());
    Instance(FormHide);
    for (const LPARAM gesture : {WM_LBUTTONDBLCLK, WM_RBUTTONUP})
        CHECK(TrayWindowProc(window, kTrayCallback, 1, gesture) == 0);
    CHECK(FindWindowW(L"#32770", L"Calvane") == nullptr);
}
