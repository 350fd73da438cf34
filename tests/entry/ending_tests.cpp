// What happens in a process that ReleaseConfig is about to end. It refuses everything from then on, so that
// each of these cases runs in a process of its own. Calls that come in meanwhile are the suite "pairs_end"'s.
#include <doctest.h>

#include <commctrl.h>

#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"
#include "tests/support/alone.h"
#include "tests/support/message_pump.h"

namespace {

constexpr const char* kEnds[] = {"with a window", "without a window", "with a full queue",
                                 "without a message"};
constexpr const char* kMoments[] = {"CreateInstance", "CreatePopup", "State", "LogFile"};

// Calls as clients' calls come, the next as soon as there is a result.
LRESULT CALLBACK CallAgain(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcW(hwnd, message, wParam, lParam);
    PostMessageW(hwnd, WM_APP, 0, 0);
    return 0;
}

BOOL WINAPI PostNothing(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

bool HasEnded() {
    return NotedEnd::Count() == 1;
}

// A timer of Windows' own threads, whose time comes when the test says so.
struct ThreadTimer {
    static BOOL WINAPI Create(HANDLE*, HANDLE, WAITORTIMERCALLBACK callback, void*, DWORD due, DWORD period,
                              ULONG) {
        CHECK(due == 30000);
        CHECK(period == 0);
        s_callback = callback;
        return TRUE;
    }

    static inline WAITORTIMERCALLBACK s_callback = nullptr;
    const ImportPatch patch{"kernel32.dll", "CreateTimerQueueTimer", &Create};
};

}  // namespace

TEST_CASE(
    "ReleaseConfig takes the window away and ends the process after its reply, in the midst of clients' "
    "calls too, and at once where no message can be posted") {
    CheckAlone("alone: ReleaseConfig", {std::begin(kEnds), std::end(kEnds)});
}

TEST_CASE("alone: ReleaseConfig" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    const HWND window = Window();
    SUBCASE("with a window") {
        CHECK(inside.control->ReleaseConfig() == S_OK);
        CHECK(g_lngClientCount == 0);
        CHECK(NotedEnd::Count() == 0);
        CHECK(PumpUntil(HasEnded));
    }
    SUBCASE("without a window") {
        g_frmConfig->Unload();
        CHECK(inside.control->ReleaseConfig() == S_OK);
        CHECK(PumpUntil(HasEnded));
    }
    SUBCASE("with a full queue") {
        const HWND client =
            CreateWindowExW(0, WC_STATICW, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(client, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CallAgain));
        for (int i = 0; i < 3; ++i)
            PostMessageW(client, WM_APP, 0, 0);
        inside.control->ReleaseConfig();
        CHECK(PumpUntil(HasEnded, 5000));
        DestroyWindow(client);
    }
    SUBCASE("without a message") {
        const ImportPatch post("user32.dll", "PostMessageW", &PostNothing);
        inside.control->ReleaseConfig();
        CHECK(HasEnded());
    }
    CHECK_FALSE(IsWindow(window));
    CHECK(g_frmConfig == nullptr);
    NotePassed();
}

TEST_CASE("ReleaseConfig ends the process half a minute later where the engine does not reply") {
    CheckAlone("alone: ReleaseConfig with a silent engine");
}

TEST_CASE("alone: ReleaseConfig with a silent engine" * doctest::skip(true)) {
    const NotedEnd end;
    const ThreadTimer timer;
    Inside inside;
    FakeEngine engine;
    bool hasEnded = false;
    engine.script.within["ReleasePopup"] = [&] {
        CHECK_FALSE(HasEnded());
        REQUIRE(static_cast<bool>(ThreadTimer::s_callback));
        ThreadTimer::s_callback(nullptr, TRUE);
        hasEnded = HasEnded();
    };
    inside.Instance(FormHide);
    inside.control->ReleaseConfig();
    CHECK(hasEnded);
    NotePassed();
}

TEST_CASE("ReleaseConfig that comes in while the engine is being connected ends the start with an error") {
    CheckAlone("alone: ReleaseConfig while the engine is called", {std::begin(kMoments), std::end(kMoments)});
}

TEST_CASE("alone: ReleaseConfig while the engine is called" * doctest::skip(true)) {
    const NotedEnd end;
    Journalled inside;
    for (const char* const moment : kMoments) {
        SUBCASE(moment) {
            inside.journal.engine.script.within[moment] = [] {
                MakeObject<ConfigControl>()->ReleaseConfig();
            };
            ComPtr<IDispatch> config;
            CHECK(inside.Instance(formShow, config) == CO_E_SERVER_STOPPING);
            CHECK(config == nullptr);
            NotePassed();
        }
    }
}
