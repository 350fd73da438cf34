// The same thing done a thousand times: what it leaves behind.
#include <doctest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "store/first_run.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/inside.h"
#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/long_runs/resources.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/settings_window.h"
#include "tray/tray_menu.h"

namespace {

// What a run may leave, whatever its length: caches of Windows that fill once.
constexpr long kHeapCeiling = 64 * 1024;  // bytes
constexpr long kHandleCeiling = 8;
constexpr long kObjectCeiling = 4;

constexpr DISPID kKilled = 1;

// keys: registry keys that stay open by design.
void CheckKept(const std::string& what, long count, const Resources& before, long keys, DWORD start) {
    const Resources after = HeldNow();
    CHECK(after.heapBytes - before.heapBytes < kHeapCeiling);
    CHECK(after.kernelHandles - before.kernelHandles - keys < kHandleCeiling);
    CHECK(after.gdiObjects - before.gdiObjects < kObjectCeiling);
    CHECK(after.menus - before.menus < kObjectCeiling);
    CHECK(after.windows - before.windows < kObjectCeiling);
    MESSAGE(what << ": " << count << " times, " << GetTickCount() - start << " ms; heap "
                 << after.heapBytes - before.heapBytes << " bytes in " << after.heapBlocks - before.heapBlocks
                 << " blocks, kernel handles " << after.kernelHandles - before.kernelHandles
                 << " (of them by design " << keys << " registry keys), GDI objects "
                 << after.gdiObjects - before.gdiObjects << ", menus " << after.menus - before.menus
                 << ", windows " << after.windows - before.windows);
}

// Ten milliseconds for each frame of the icon instead of 250.
decltype(&SetTimer) setTimer = nullptr;
UINT_PTR WINAPI SetShortTimer(HWND window, UINT_PTR id, UINT interval, TIMERPROC procedure) {
    return setTimer(window, id, interval == 250 ? 10 : interval, procedure);
}

// The environment variable LONG_RUN holds how many times as often everything is done as by default.
int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
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

    static long s_menus;
    static long s_dialogs;
    HHOOK m_hook = nullptr;
};
long Impatience::s_menus = 0;
long Impatience::s_dialogs = 0;

template <class Page>
void RunDialog(const char* what, Button Page::*button) {
    const int openings = Times(200);
    Page page;
    const Impatience user;
    for (int i = 0; i < 4; ++i)
        page.Click(page.*button);
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < openings; ++i)
        page.Click(page.*button);
    CHECK(user.Dialogs() >= openings + 4);
    CheckKept(what, openings, before, 0, start);
}

}  // namespace

TEST_CASE("a thousand notices with their animations leave nothing behind") {
    const int notices = Times(1000);
    const QuietSystem quiet;
    FakeEngine engine;
    Inside inside;
    inside.Instance(FormHide);
    const ImportPatch timer("user32.dll", "SetTimer", &SetShortTimer);
    setTimer = timer.Original<decltype(&SetTimer)>();
    const auto notice = [&](int i) {
        engine.Raise(kKilled, {4711L, L"Win a prize"});
        // Each eighth animation runs to its end; the others are cut off at some frame by the next one.
        PumpFor(i % 8 == 0 ? 55 : static_cast<DWORD>(i % 3) * 5);
    };
    for (int i = 0; i < 8; ++i)
        notice(i);
    PumpFor(100);
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < notices; ++i)
        notice(i);
    PumpFor(100);
    CheckKept("notices", notices, before, 0, start);
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
    CheckKept("Applies", applies, before, saves, start);
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
    CheckKept("openings of the tray menu", openings, before, 0, start);
}

TEST_CASE("two hundred openings of each dialog leave nothing behind") {
    // What Windows itself keeps of the same templates, without any of the program behind them.
    for (const int id : {IDD_ADD_URL, IDD_ADD_BANNER_SIZE, IDD_ADD_SEARCH}) {
        const auto open = [&] {
            DestroyWindow(
                CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), nullptr, nullptr, 0));
        };
        open();
        const DWORD start = GetTickCount();
        const Resources before = HeldNow();
        for (int i = 0; i < 200; ++i)
            open();
        CheckKept("bare openings of template " + std::to_string(id), 200, before, 0, start);
    }
    RunDialog("openings of the address dialog", &ExcludePage::cmdAddURL);
    RunDialog("openings of the banner size dialog", &BannerPage::cmdAddSize);
    RunDialog("openings of the search address dialog", &SearchPage::cmdAddSearch);
}
