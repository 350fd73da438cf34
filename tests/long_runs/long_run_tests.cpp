// The same thing done a thousand times: what it leaves behind.
#include <doctest.h>

#include <string>

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
#include "tests/support/dialog_script.h"
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

void CALLBACK CloseMenu(HWND, UINT, UINT_PTR, DWORD) {
    EndMenu();
}

template <class Page>
void OpenAndCancel(Page& page, Button& button, int count) {
    for (int i = 0; i < count; ++i) {
        const DialogScript script({[](HWND dialog) { ClickButton(dialog, IDCANCEL); }});
        page.Click(button);
    }
}

template <class Page>
void RunDialog(const char* what, Button Page::*button) {
    constexpr int kOpenings = 200;
    Page page;
    OpenAndCancel(page, page.*button, 4);
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    OpenAndCancel(page, page.*button, kOpenings);
    CheckKept(what, kOpenings, before, 0, start);
}

}  // namespace

TEST_CASE("a thousand notices with their animations leave nothing behind") {
    constexpr int kNotices = 1000;
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
    for (int i = 0; i < kNotices; ++i)
        notice(i);
    PumpFor(100);
    CheckKept("notices", kNotices, before, 0, start);
}

TEST_CASE("a thousand Applies leave one open registry key for each value that they wrote, and nothing else") {
    constexpr int kApplies = 1000;
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
    for (int i = 0; i < kApplies; ++i)
        apply();
    page.events.clear();
    CHECK(saves > kApplies * 30);
    const Resources after = HeldNow();
    CHECK(after.kernelHandles - before.kernelHandles >= saves);
    CheckKept("Applies", kApplies, before, saves, start);
}

TEST_CASE("a thousand openings of the tray menu leave nothing behind") {
    constexpr int kOpenings = 1000;
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const auto window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
    const UINT_PTR user = SetTimer(nullptr, 0, 1, CloseMenu);
    const auto open = [&] {
        SendMessageW(window, 1025, 0, WM_RBUTTONUP);
        PumpFor(0);
    };
    for (int i = 0; i < 4; ++i)
        open();
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < kOpenings; ++i)
        open();
    KillTimer(nullptr, user);
    CheckKept("openings of the tray menu", kOpenings, before, 0, start);
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
