// What happens in a process that ReleaseConfig is about to end. It refuses everything from then on, so that
// each of these cases runs in a process of its own.
#include <doctest.h>

#include <commctrl.h>

#include "platform/text.h"
#include "tests/entry/alone.h"
#include "tests/entry/start_journal.h"
#include "tests/support/message_pump.h"

namespace {

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

}  // namespace

TEST_CASE("ReleaseConfig takes the window away and ends the process after its reply") {
    CheckInOwnProcess(L"alone: ReleaseConfig with a window");
}

TEST_CASE("alone: ReleaseConfig with a window" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    const auto window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
    CHECK(inside.control->ReleaseConfig() == S_OK);
    CHECK_FALSE(IsWindow(window));
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);
    CHECK(ends == 0);

    SUBCASE("clients that come late get an error") {
        ComPtr<IDispatch> late;
        CHECK(inside.Instance(formShow, late) == CO_E_SERVER_STOPPING);
        CHECK(late == nullptr);
        CHECK(inside.control->ReleaseConfig() == CO_E_SERVER_STOPPING);
        VARIANT value;
        CHECK(g_oConfig->get_ConfigHwnd(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_oConfig->get_ConfigForm(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_oConfig->get_ShellIconClass(&value) == CO_E_SERVER_STOPPING);
        CHECK(g_lngClientCount == 0);
    }
    CHECK(ends == 0);
    CHECK(PumpUntil([] { return ends == 1; }));
}

TEST_CASE("ReleaseConfig ends the process however many messages clients' calls leave in its queue") {
    CheckInOwnProcess(L"alone: ReleaseConfig with a full queue");
}

TEST_CASE("alone: ReleaseConfig with a full queue" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const HWND client =
        CreateWindowExW(0, WC_STATICW, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(client, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CallAgain));
    for (int i = 0; i < 3; ++i)
        PostMessageW(client, WM_APP, 0, 0);
    inside.control->ReleaseConfig();
    CHECK(PumpUntil([] { return ends == 1; }, 5000));
    DestroyWindow(client);
}

TEST_CASE("ReleaseConfig ends the process at once where no message can be posted") {
    CheckInOwnProcess(L"alone: ReleaseConfig without a message");
}

TEST_CASE("alone: ReleaseConfig without a message" * doctest::skip(true)) {
    const NotedEnd end;
    const ImportPatch post("user32.dll", "PostMessageW", &PostNothing);
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    inside.control->ReleaseConfig();
    CHECK(ends == 1);
    CHECK(g_frmConfig == nullptr);
}

TEST_CASE("ReleaseConfig without a window ends the process all the same") {
    CheckInOwnProcess(L"alone: ReleaseConfig without a window");
}

TEST_CASE("alone: ReleaseConfig without a window" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    inside.Instance(FormHide);
    g_frmConfig->Unload();
    CHECK(inside.control->ReleaseConfig() == S_OK);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 1);
    CHECK(PumpUntil([] { return ends == 1; }));
}

TEST_CASE("ReleaseConfig that comes in while the engine is being connected ends the start with an error") {
    for (const char* const moment : kMoments) {
        CheckInOwnProcess(L"alone: ReleaseConfig while the engine is called", FromAnsi(moment));
    }
}

TEST_CASE("alone: ReleaseConfig while the engine is called" * doctest::skip(true)) {
    const NotedEnd end;
    Inside inside;
    StartJournal journal;
    for (const char* const moment : kMoments) {
        SUBCASE(moment) {
            HRESULT ended = E_FAIL;
            journal.engine.script.within[moment] = [&] {
                ended = MakeObject<ConfigControl>()->ReleaseConfig();
            };
            ComPtr<IDispatch> config;
            CHECK(inside.Instance(formShow, config) == CO_E_SERVER_STOPPING);
            CHECK(ended == S_OK);
            CHECK(config == nullptr);
            CHECK(g_frmConfig == nullptr);
            CHECK(journal.Count("window") == 1);
            CHECK(FindWindowW(L"#32770", L"Calvane") == nullptr);
            CHECK(ends == 0);
            CHECK(PumpUntil([] { return ends == 1; }));
        }
    }
}
