// Senseless calls of every object in this process.
#include <doctest.h>

#include <shellapi.h>
#include <commdlg.h>

#include "tests/client_abuse/quiet_system.h"
#include "tests/client_abuse/random_calls.h"
#include "tests/entry/inside.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"

TEST_CASE("senseless calls of every object leave the window as usable as before") {
    constexpr long kCalls = 20000;
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    const ComPtr<IDispatch> config = inside.Instance(FormHide);
    const LONG window = g_lngConfigHwnd;
    const ComPtr<IDispatch> form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    const ComPtr<IDispatch> icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    const ComPtr<IDispatch> frame = ObjectIn(Get(form.Get(), L"picTray", {1L}));
    std::vector<LONG> windows{window};
    for (const wchar_t* const name : {L"tab", L"lstExclude", L"cmdOK", L"txtSpeed"})
        windows.push_back(ToLong(Call(form.Get(), L"ControlHwnd", {name})));

    const uint32_t seed = Chance::Seed();
    Chance chance(seed);
    const DWORD start = GetTickCount();
    long answered = 0;
    {
        RandomCalls calls(chance,
                          {{static_cast<IDispatch*>(inside.control.Get()), {0x60030000}, {0x60030001}},
                           {config, {0x68030000, 0x68030001, 0x68030002}, {}},
                           // Without an engine m_oPopup (3) is empty. Given arguments, Wine's
                           // ITypeInfo::Invoke takes them for
                           // arguments of the object in it, and does not look whether there is one.
                           {form, {1, 2, 4, 5, 6, 7, 8, 9, 10, 11}, {3}},
                           {icon, {1, 2, 3, 4, 5}, {}},
                           {picture, {1, 2}, {}},
                           {frame, {1, 2}, {}}},
                          windows, true);
        DWORD slowest = 0;
        for (long i = 0; i < kCalls; ++i) {
            CAPTURE(seed);
            CAPTURE(i);
            const DWORD before = GetTickCount();
            calls.One();
            if (i % 100 == 0) PumpFor(1);
            slowest = std::max(slowest, GetTickCount() - before);
            REQUIRE(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))));
        }
        CHECK(slowest < 5000);
        for (const auto& [result, count] : calls.Results()) {
            if (SUCCEEDED(result)) answered += count;
        }
        // Sense among the nonsense: otherwise nothing but the first check of each call was tried.
        CHECK(answered > kCalls / 20);
        CHECK(calls.Results().size() > 8);
        MESSAGE("in process: " << calls.Calls() << " calls from seed " << seed << ", " << answered
                               << " carried out, " << calls.Results().size() << " different results, "
                               << GetTickCount() - start << " ms, slowest " << slowest << " ms");
    }
    // The caption and the rest are what the last caller made of them; the window itself answers.
    Put(form.Get(), L"b_OKtoUnload", false);
    CHECK(ToLong(Get(config.Get(), L"ConfigHwnd")) == window);
    Put(form.Get(), L"Caption", L"still here");
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"still here");
    Call(form.Get(), L"Show");
    CHECK(IsWindowVisible(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))));
}
