// The same thing done many times: what it leaves behind.
#include <doctest.h>

#include <windows.h>
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <span>
#include <string>

#include "lists/resource.h"
#include "platform/system_library.h"
#include "store/first_run.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/lists/list_pages.h"
#include "tests/pairs/clock.h"
#include "tests/support/message_pump.h"
#include "tests/support/registry_calls.h"
#include "tests/support/settings_window.h"

namespace {

// What this process holds of the system. Registry keys are among the kernel handles.
enum Resource { HeapBytes, HeapBlocks, KernelHandles, GdiObjects, Menus, Windows };
using Resources = std::array<long, Windows + 1>;

// What a run may leave, whatever its length: caches of Windows that fill once.
struct Kind {
    Resource resource;
    std::string name;
    long ceiling;
};
const Kind kKinds[] = {{HeapBytes, "heap bytes", 64 * 1024},
                       {HeapBlocks, "heap blocks", 64},  // fewer than any run has rounds
                       {KernelHandles, "kernel handles", 8},
                       {GdiObjects, "GDI objects", 4},
                       {Menus, "menus", 4},
                       {Windows, "windows", 4}};

void CountHeap(Resources& held) {
    HANDLE heaps[64];
    const DWORD count = std::min(GetProcessHeaps(64, heaps), DWORD{64});
    for (const HANDLE heap : std::span(heaps, count)) {
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
            held[HeapBytes] += static_cast<long>(entry.cbData);
            ++held[HeapBlocks];
        }
        HeapUnlock(heap);
    }
}

// Windows tells how many there are. Wine does not everywhere, but tells what lies behind the lower half of a
// handle.
long CountGdiObjects() {
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return static_cast<long>(count);
    long count = 0;
    for (ULONG_PTR index = 0; index < 0x4000; ++index)
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0 ? 1 : 0;
    return count;
}

void CountUserObjects(Resources& held) {
    for (ULONG_PTR handle = 0x20; handle < 0x8000; handle += 2) {
        if (IsMenu(reinterpret_cast<HMENU>(handle))) ++held[Menus];
        DWORD process = 0;
        GetWindowThreadProcessId(reinterpret_cast<HWND>(handle), &process);
        if (process == GetCurrentProcessId()) ++held[Windows];
    }
}

long CountKernelHandles() {
    // For the handles of all processes; outside the heaps, which are counted too.
    constexpr ULONG kSize = 32 << 20;
    void* const buffer = VirtualAlloc(nullptr, kSize, MEM_COMMIT, PAGE_READWRITE);
    auto* const query = FunctionOf<decltype(NtQuerySystemInformation)>(GetModuleHandleW(L"ntdll.dll"),
                                                                       "NtQuerySystemInformation");
    REQUIRE(query(SystemHandleInformation, buffer, kSize, nullptr) == 0);
    const auto& all = *static_cast<const SYSTEM_HANDLE_INFORMATION*>(buffer);
    const auto count = std::count_if(
        all.Handle, all.Handle + all.Count,
        [](const SYSTEM_HANDLE_ENTRY& handle) { return handle.OwnerPid == GetCurrentProcessId(); });
    VirtualFree(buffer, 0, MEM_RELEASE);
    return static_cast<long>(count);
}

Resources HeldNow() {
    Resources held{};
    held[KernelHandles] = CountKernelHandles();
    CountHeap(held);
    held[GdiObjects] = CountGdiObjects();
    CountUserObjects(held);
    return held;
}

// How often something is done: count times, or as many times more as the environment variable LONG_RUN holds.
int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

constexpr int kFirstTimes = 4;  // in which Windows fills its caches

// What is kept of doing something count times.
Resources KeptBy(int count, const std::function<void()>& deed) {
    for (int i = 0; i < kFirstTimes; ++i)
        deed();
    const Resources before = HeldNow();
    for (int i = 0; i < count; ++i)
        deed();
    Resources kept = HeldNow();
    for (size_t i = 0; i < kept.size(); ++i)
        kept[i] -= before[i];
    return kept;
}

// Checks that this is nothing but caches, and prints it. keys: registry keys that each time leaves open by
// design. bare: what Windows itself keeps in this process for its part of the same thing.
void CheckKept(const std::string& what, int count, const std::function<void()>& deed, long keys = 0,
               const Resources& bare = {}) {
    const Resources kept = KeptBy(count, deed);
    std::string line = what + ": " + std::to_string(count) + " times";
    for (const auto& [resource, name, ceiling] : kKinds) {
        const long byDesign = resource == KernelHandles ? count * keys : 0;
        CAPTURE(name);
        CHECK(kept[resource] - bare[resource] - byDesign < ceiling);
        if (byDesign != 0) CHECK(kept[resource] >= byDesign);
        line +=
            "; " + name + " " + std::to_string(kept[resource]) + ", bare " + std::to_string(bare[resource]);
    }
    MESSAGE(line);
}

// Ends the menus and dialogs of its thread as soon as they wait for a user, and counts them.
struct Impatience {
    Impatience() { s_ended = 0; }
    ~Impatience() { UnhookWindowsHookEx(hook); }

    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && sent.message == WM_ENTERIDLE) {
            ++s_ended;
            if (sent.wParam == MSGF_MENU) {
                EndMenu();
            } else {
                PostMessageW(reinterpret_cast<HWND>(sent.lParam), WM_COMMAND, IDCANCEL, 0);
            }
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline int s_ended = 0;
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, Watch, nullptr, GetCurrentThreadId());
};

INT_PTR CALLBACK BareProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dialog, 0);
    return message == WM_INITDIALOG ? TRUE : FALSE;
}

// No more than what Windows itself keeps of the same template.
template <class Page>
void CheckDialog(const std::string& what, int resource, Button Page::*button) {
    // Enough for a block of the heap in each to be more than caches.
    constexpr int kOpenings = 100;
    const Impatience user;
    Page page;
    const Resources bare = KeptBy(kOpenings, [&] {
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource), page.window.Hwnd(),
                        BareProcedure, 0);
    });
    CheckKept(
        what, kOpenings, [&] { page.Click(page.*button); }, 0, bare);
    CHECK(user.s_ended >= 2 * (kOpenings + kFirstTimes));
}

}  // namespace

TEST_CASE("thousands of notices with their animations leave nothing behind") {
    constexpr DISPID kKilled = 1;
    constexpr int kTicksOfAnimation = 4;
    const QuietSystem quiet;
    Clock clock;
    FakeEngine engine;
    Inside inside;
    inside.Instance(FormHide);
    CheckKept("eight notices", Times(250), [&] {
        size_t ticks = 0;
        for (int i = 0; i < 8; ++i) {
            engine.Raise(kKilled, {4711L, L"Win a prize"});
            // Each eighth animation runs to its end; the others are cut off at some frame by the next one.
            for (int left = i == 0 ? kTicksOfAnimation : i % 3; left > 0; --left)
                ticks += clock.Tick();
            PumpPosted();
        }
        clock.TickLate();
        CHECK(ticks == kTicksOfAnimation + 1 + 2 + 0 + 1 + 2 + 0 + 1);
    });
}

TEST_CASE(
    "hundreds of Applies leave one open registry key for each value that they wrote, and nothing else") {
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.transfer.LoadSettings();
    RegistryCalls calls;
    const auto apply = [&] {
        page.commands.cmdApply_Click();
        // What the page itself notes of the Applies is no part of them.
        page.events.clear();
    };
    calls.Watch(apply);
    const auto writes = static_cast<long>(calls.Count(RegistryFunction::Set));
    CHECK(writes > 30);
    calls.Watch([] {});
    CheckKept("Applies", Times(200), apply, writes);
}

TEST_CASE("thousands of arguments for the object in a property leave nothing behind") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    std::wstring caption = L"Caption";
    LPOLESTR name = caption.data();
    DISPID member = 0;
    REQUIRE(g_frmConfig->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &member) == S_OK);
    VARIANT argument{};
    argument.vt = VT_I4;
    DISPPARAMS arguments{&argument, nullptr, 1, 0};
    CheckKept("arguments for the object in a property", Times(2000), [&] {
        VARIANT result{};
        CHECK(g_frmConfig->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &arguments,
                                  &result, nullptr, nullptr) == DISP_E_NOTACOLLECTION);
    });
}

TEST_CASE("hundreds of openings of the tray menu leave nothing behind") {
    const int openings = Times(200);
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const Impatience user;
    CheckKept("openings of the tray menu", openings, [&] {
        SendMessageW(Window(), kTrayCallback, 0, WM_RBUTTONUP);
        PumpPosted();
    });
    CHECK(user.s_ended >= openings + kFirstTimes);
}

TEST_CASE("hundreds of openings of each dialog leave no more behind than those of its bare template") {
    CheckDialog<ExcludePage>("openings of the address dialog", IDD_ADD_URL, &ExcludePage::cmdAddURL);
    CheckDialog<BannerPage>("openings of the banner size dialog", IDD_ADD_BANNER_SIZE,
                            &BannerPage::cmdAddSize);
    CheckDialog<SearchPage>("openings of the search address dialog", IDD_ADD_SEARCH,
                            &SearchPage::cmdAddSearch);
}
