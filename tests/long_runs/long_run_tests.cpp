// The same thing done a thousand times: what it leaves behind.
#include <doctest.h>

#include <string>
#include <vector>

#include "store/first_run.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/inside.h"
#include "tests/long_runs/repetition.h"
#include "tests/support/message_pump.h"
#include "tests/support/settings_window.h"
#include "tray/tray_menu.h"

namespace {

constexpr DISPID kKilled = 1;
constexpr UINT kFrameInterval = 250;  // milliseconds
constexpr int kTicksOfAnimation = 4;
// The whole animation, and 1, 2, 0, 1, 2, 0, 1 ticks of the seven others.
constexpr long kTicksOfEight = kTicksOfAnimation + 7;

// The icon's timer, of which the test decides when it ticks.
class IconTimer {
public:
    IconTimer() {
        s_owner = nullptr;
        s_set = &m_set;
        s_kill = &m_kill;
    }
    IconTimer(const IconTimer&) = delete;
    IconTimer& operator=(const IconTimer&) = delete;

    // Whether there was one that ticked.
    static bool Tick() {
        if (s_owner == nullptr) return false;
        const MSG tick{s_owner, WM_TIMER, s_id, reinterpret_cast<LPARAM>(s_procedure), 0, {}};
        DispatchMessageW(&tick);
        return true;
    }

private:
    static UINT_PTR WINAPI Set(HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure) {
        if (interval != kFrameInterval)
            return s_set->Original<decltype(&SetTimer)>()(owner, id, interval, procedure);
        s_owner = owner;
        s_id = id;
        s_procedure = procedure;
        return id;
    }
    static BOOL WINAPI Kill(HWND owner, UINT_PTR id) {
        if (owner != s_owner || id != s_id) return s_kill->Original<decltype(&KillTimer)>()(owner, id);
        s_owner = nullptr;
        return TRUE;
    }

    static HWND s_owner;
    static UINT_PTR s_id;
    static TIMERPROC s_procedure;
    static const ImportPatch* s_set;
    static const ImportPatch* s_kill;

    const ImportPatch m_set{"user32.dll", "SetTimer", &Set};
    const ImportPatch m_kill{"user32.dll", "KillTimer", &Kill};
};
HWND IconTimer::s_owner = nullptr;
UINT_PTR IconTimer::s_id = 0;
TIMERPROC IconTimer::s_procedure = nullptr;
const ImportPatch* IconTimer::s_set = nullptr;
const ImportPatch* IconTimer::s_kill = nullptr;

}  // namespace

TEST_CASE("ten thousand notices with their animations leave nothing behind") {
    const int notices = Times(10000);
    const QuietSystem quiet;
    FakeEngine engine;
    Inside inside;
    inside.Instance(FormHide);
    const IconTimer timer;
    long ticks = 0;
    const auto notice = [&](int i) {
        engine.Raise(kKilled, {4711L, L"Win a prize"});
        // Each eighth animation runs to its end; the others are cut off at some frame by the next one.
        for (int left = i % 8 == 0 ? kTicksOfAnimation : i % 3; left > 0; --left) {
            if (IconTimer::Tick()) ++ticks;
        }
        PumpUntil([] { return GetQueueStatus(QS_ALLINPUT) == 0; });
    };
    for (int i = 0; i < 8; ++i)
        notice(i);
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    ticks = 0;
    for (int i = 0; i < notices; i += 8) {
        for (int n = 0; n < 8; ++n)
            notice(n);
        CHECK(ticks == (i / 8 + 1) * kTicksOfEight);
    }
    IconTimer::Tick();
    CheckKept("notices", notices, HeldNow() - before, 0, start);
}

TEST_CASE("a thousand Applies leave one open registry key for each value that they wrote, and nothing else") {
    const int applies = Times(1000);
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.transfer.LoadSettings();
    static long saves;
    static decltype(&RegSetValueExA) setValue;
    saves = 0;
    const auto apply = [&] { page.commands.cmdApply_Click(); };
    apply();
    apply();
    const DWORD start = GetTickCount();
    struct Counting {
        static LSTATUS WINAPI Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                  DWORD size) {
            ++saves;
            return setValue(key, name, reserved, type, data, size);
        }
    };
    const ImportPatch set("advapi32.dll", "RegSetValueExA", &Counting::Set);
    setValue = set.Original<decltype(&RegSetValueExA)>();
    const Resources before = HeldNow();
    for (int i = 0; i < applies; ++i)
        apply();
    // What the page itself has noted of the Applies is no part of them.
    std::vector<std::string>().swap(page.events);
    CHECK(saves > applies * 30L);
    const Resources after = HeldNow();
    CHECK(after.kernelHandles - before.kernelHandles >= saves);
    CheckKept("Applies", applies, HeldNow() - before, saves, start);
}

TEST_CASE("a thousand openings of the tray menu leave nothing behind") {
    const int openings = Times(1000);
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const auto window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
    const Impatience user;
    const auto open = [&] {
        SendMessageW(window, 1025, 0, WM_RBUTTONUP);
        PumpFor(0);
    };
    for (int i = 0; i < 4; ++i)
        open();
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < openings; ++i)
        open();
    CHECK(user.Menus() >= openings + 4);
    CheckKept("openings of the tray menu", openings, HeldNow() - before, 0, start);
}
