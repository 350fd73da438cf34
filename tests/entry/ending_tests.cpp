// What happens in a process that ReleaseConfig is about to end. It refuses everything from then on, so that
// each of these cases runs in a process of its own. Calls that come in meanwhile are the suite "pairs_end"'s.
#include <doctest.h>

#include <commctrl.h>

#include "tests/entry/journalled.h"
#include "tests/support/alone.h"
#include "tests/support/message_pump.h"

namespace {

constexpr const char* kMoments[] = {"CreateInstance", "CreatePopup", "State", "LogFile"};

// Calls as clients' calls come, the next as soon as there is a result.
LRESULT CALLBACK CallAgain(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcW(hwnd, message, wParam, lParam);
    PostMessageW(hwnd, WM_APP, 0, 0);
    return 0;
}

bool HasEnded() {
    return NotedEnd::Count() == 1;
}

}  // namespace

TEST_CASE(
    "ReleaseConfig takes the window away and ends the process after its reply, in the midst of clients' "
    "calls too, at once where no message can be posted, and after half a minute where the engine does not "
    "reply") {
    CheckAlone("alone: ReleaseConfig", {"with a window", "without a window", "with a full queue",
                                        "without a message", "with a silent engine"});
}

TEST_CASE_FIXTURE(Journalled, "alone: ReleaseConfig" * doctest::skip(true)) {
    const NotedEnd end;
    const auto config = Instance(FormHide);
    const HWND window = Window();
    SUBCASE("with a window") {
        CHECK(control->ReleaseConfig() == S_OK);
        CHECK(g_lngClientCount == 0);
        CHECK(NotedEnd::Count() == 0);
        CHECK(PumpUntil(HasEnded));
    }
    SUBCASE("without a window") {
        g_frmConfig->Unload();
        CHECK(control->ReleaseConfig() == S_OK);
        CHECK(PumpUntil(HasEnded));
    }
    SUBCASE("with a full queue") {
        const HWND client =
            CreateWindowExW(0, WC_STATICW, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(client, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CallAgain));
        for (int i = 0; i < 3; ++i)
            PostMessageW(client, WM_APP, 0, 0);
        control->ReleaseConfig();
        CHECK(PumpUntil(HasEnded, 5000));
        DestroyWindow(client);
    }
    SUBCASE("without a message") {
        const ImportFake<"PostMessageW", decltype(&PostMessageW)> post{
            "user32.dll", [](HWND, UINT, WPARAM, LPARAM) { return FALSE; }};
        control->ReleaseConfig();
        CHECK(HasEnded());
    }
    SUBCASE("with a silent engine") {
        // A timer of Windows' own threads, whose time comes when the test says so.
        WAITORTIMERCALLBACK tick = nullptr;
        const ImportFake<"CreateTimerQueueTimer", decltype(&CreateTimerQueueTimer)> timer{
            "kernel32.dll",
            [&](HANDLE*, HANDLE, WAITORTIMERCALLBACK callback, void*, DWORD due, DWORD period, ULONG) {
                CHECK(due == 30000);
                CHECK(period == 0);
                tick = callback;
                return TRUE;
            }};
        bool hasEnded = false;
        engine.script.within["ReleasePopup"] = [&] {
            CHECK_FALSE(HasEnded());
            REQUIRE(static_cast<bool>(tick));
            tick(nullptr, TRUE);
            hasEnded = HasEnded();
        };
        control->ReleaseConfig();
        CHECK(hasEnded);
    }
    CHECK_FALSE(IsWindow(window));
    CHECK(g_frmConfig == nullptr);
    NotePassed();
}

TEST_CASE("ReleaseConfig that comes in while the engine is being connected ends the start with an error") {
    CheckAlone("alone: ReleaseConfig while the engine is called", {std::begin(kMoments), std::end(kMoments)});
}

TEST_CASE_FIXTURE(Journalled, "alone: ReleaseConfig while the engine is called" * doctest::skip(true)) {
    const NotedEnd end;
    for (const char* const moment : kMoments) {
        SUBCASE(moment) {
            LetIn(moment, [] { MakeObject<ConfigControl>()->ReleaseConfig(); });
            ComPtr<IDispatch> config;
            CHECK(Instance(formShow, config) == CO_E_SERVER_STOPPING);
            CHECK(config == nullptr);
            NotePassed();
        }
    }
}
