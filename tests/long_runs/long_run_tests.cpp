// The same thing done many times: what it leaves behind.
#include <doctest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "store/first_run.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/inside.h"
#include "tests/lists/list_pages.h"
#include "tests/long_runs/resources.h"
#include "tests/support/message_pump.h"
#include "tests/support/registry_calls.h"
#include "tests/support/settings_window.h"
#include "tray/tray_menu.h"

namespace {

// What a run may leave, whatever its length: caches of Windows that fill once.
constexpr long kHeapCeiling = 64 * 1024;  // bytes
constexpr long kBlockCeiling = 64;        // fewer than any run has rounds
constexpr long kHandleCeiling = 8;
constexpr long kObjectCeiling = 4;

// How often something is done: count times, or as many times more as the environment variable LONG_RUN holds.
int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

// Checks that what is kept since start is nothing but caches of Windows that fill once, and prints it. keys:
// registry keys that stay open by design. bare: what Windows itself has kept in this process for its part of
// the same thing.
void CheckKept(const std::string& what, long count, const Resources& kept, long keys, DWORD start,
               const Resources& bare = {}) {
    CHECK(kept.heapBytes - bare.heapBytes < kHeapCeiling);
    CHECK(kept.heapBlocks - bare.heapBlocks < kBlockCeiling);
    CHECK(kept.kernelHandles - bare.kernelHandles - keys < kHandleCeiling);
    CHECK(kept.gdiObjects - bare.gdiObjects < kObjectCeiling);
    CHECK(kept.menus - bare.menus < kObjectCeiling);
    CHECK(kept.windows - bare.windows < kObjectCeiling);
    MESSAGE(what << ": " << count << " times, " << GetTickCount() - start << " ms; heap " << kept.heapBytes
                 << " bytes in " << kept.heapBlocks << " blocks (bare " << bare.heapBytes << " in "
                 << bare.heapBlocks << "), kernel handles " << kept.kernelHandles << " (of them by design "
                 << keys << " registry keys, bare " << bare.kernelHandles << "), GDI objects "
                 << kept.gdiObjects << " (" << bare.gdiObjects << "), menus " << kept.menus << " ("
                 << bare.menus << "), windows " << kept.windows << " (" << bare.windows << ")");
}

// Ends the menus and dialogs of its thread as soon as they wait for a user, and counts them.
class Impatience {
public:
    Impatience() {
        s_menus = s_dialogs = 0;
        m_hook = SetWindowsHookExW(WH_CALLWNDPROC, Watch, nullptr, GetCurrentThreadId());
    }
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;
    ~Impatience() { UnhookWindowsHookEx(m_hook); }

    long Menus() const noexcept { return s_menus; }
    long Dialogs() const noexcept { return s_dialogs; }

private:
    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == WM_ENTERIDLE) {
            if (sent.wParam == MSGF_MENU) {
                ++s_menus;
                EndMenu();
            } else {
                ++s_dialogs;
                PostMessageW(reinterpret_cast<HWND>(sent.lParam), WM_COMMAND, IDCANCEL, 0);
            }
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline long s_menus = 0;
    static inline long s_dialogs = 0;
    HHOOK m_hook = nullptr;
};

constexpr DISPID kKilled = 1;
constexpr UINT kFrameInterval = 250;  // milliseconds
constexpr int kTicksOfAnimation = 4;
// The whole animation, and 1, 2, 0, 1, 2, 0, 1 ticks of the seven others.
constexpr long kTicksOfEight = kTicksOfAnimation + 7;

// The icon's timer, of which the test decides when it ticks.
class IconTimer {
public:
    IconTimer() { s_current = this; }
    IconTimer(const IconTimer&) = delete;
    IconTimer& operator=(const IconTimer&) = delete;

    // Whether there was one that ticked.
    bool Tick() const {
        if (m_tick.hwnd == nullptr) return false;
        DispatchMessageW(&m_tick);
        return true;
    }

private:
    static UINT_PTR WINAPI Set(HWND owner, UINT_PTR id, UINT interval, TIMERPROC procedure) {
        if (interval != kFrameInterval)
            return s_current->m_set.Original<decltype(&SetTimer)>()(owner, id, interval, procedure);
        s_current->m_tick = {owner, WM_TIMER, id, reinterpret_cast<LPARAM>(procedure), 0, {}};
        return id;
    }
    static BOOL WINAPI Kill(HWND owner, UINT_PTR id) {
        MSG& tick = s_current->m_tick;
        if (owner != tick.hwnd || id != tick.wParam)
            return s_current->m_kill.Original<decltype(&KillTimer)>()(owner, id);
        tick.hwnd = nullptr;
        return TRUE;
    }

    static inline IconTimer* s_current = nullptr;
    MSG m_tick{};
    const ImportPatch m_set{"user32.dll", "SetTimer", &Set};
    const ImportPatch m_kill{"user32.dll", "KillTimer", &Kill};
};

// Enough for a block of the heap in each to be more than caches.
constexpr int kOpenings = 100;

INT_PTR CALLBACK BareProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dialog, 0);
    return message == WM_INITDIALOG ? TRUE : FALSE;
}

// What is kept after many openings.
Resources KeptBy(const std::function<void()>& open) {
    const Impatience user;
    for (int i = 0; i < 4; ++i)
        open();
    const Resources before = HeldNow();
    for (int i = 0; i < kOpenings; ++i)
        open();
    CHECK(user.Dialogs() >= kOpenings + 4);
    return HeldNow() - before;
}

// Beside what Windows itself keeps of the same template.
template <class Page>
void CheckDialog(const char* what, int resource, Button Page::*button) {
    Page page;
    const Resources bare = KeptBy([&] {
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource), page.window.Hwnd(),
                        BareProcedure, 0);
    });
    const DWORD start = GetTickCount();
    CheckKept(what, kOpenings, KeptBy([&] { page.Click(page.*button); }), 0, start, bare);
}

}  // namespace

TEST_CASE("thousands of notices with their animations leave nothing behind") {
    const int notices = Times(2000);
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
            if (timer.Tick()) ++ticks;
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
    timer.Tick();
    CheckKept("notices", notices, HeldNow() - before, 0, start);
}

TEST_CASE(
    "hundreds of Applies leave one open registry key for each value that they wrote, and nothing else") {
    const int applies = Times(200);
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.transfer.LoadSettings();
    RegistryCalls calls;
    const auto apply = [&] { page.commands.cmdApply_Click(); };
    calls.Watch(apply);
    const auto writes = static_cast<long>(calls.Count(RegistryFunction::Set));
    CHECK(writes > 30);
    calls.Watch([] {});
    apply();
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < applies; ++i)
        apply();
    // What the page itself has noted of the Applies is no part of them.
    std::vector<std::string>().swap(page.events);
    const Resources kept = HeldNow() - before;
    CHECK(kept.kernelHandles >= applies * writes);
    CheckKept("Applies", applies, kept, applies * writes, start);
}

TEST_CASE("hundreds of openings of the tray menu leave nothing behind") {
    const int openings = Times(200);
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

TEST_CASE("hundreds of openings of each dialog leave no more behind than those of its bare template") {
    CheckDialog<ExcludePage>("openings of the address dialog", IDD_ADD_URL, &ExcludePage::cmdAddURL);
    CheckDialog<BannerPage>("openings of the banner size dialog", IDD_ADD_BANNER_SIZE,
                            &BannerPage::cmdAddSize);
    CheckDialog<SearchPage>("openings of the search address dialog", IDD_ADD_SEARCH,
                            &SearchPage::cmdAddSearch);
}
