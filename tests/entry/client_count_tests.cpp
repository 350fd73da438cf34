// What ConfigInstance does for a client, the count of clients, and calls that cannot be carried out.
#include <doctest.h>

#include <climits>

#include "tests/entry/window_inside.h"
#include "tests/support/alone.h"
#include "tests/support/message_pump.h"

namespace {

constexpr HRESULT kOverflow = static_cast<HRESULT>(0x800A0006);
constexpr int kAboutTab = 5;

}  // namespace

TEST_CASE("show type 1 shows the window as it is, 3 on its About page; others neither show nor hide") {
    for (const long showType : {2L, 0L, 4L, -1L, LONG_MIN, LONG_MAX}) {
        CAPTURE(showType);
        InsideWithoutEngine inside;
        inside.Instance(showType);
        CHECK_FALSE(IsShown());
        inside.Instance(formShow);
        CHECK(IsShown());
        CHECK(SelectedTab() == 0);
        inside.Instance(showType);
        CHECK(IsShown());
        g_frmConfig->Hide();
        inside.Instance(kShowAbout);
        CHECK(IsShown());
        CHECK(SelectedTab() == kAboutTab);
        g_frmConfig->Hide();
        inside.Instance(formShow);
        CHECK(SelectedTab() == kAboutTab);
        CHECK(g_lngClientCount == 5);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "the show type is never written, and each client gets the same Config") {
    const auto first = Instance(FormHide);
    const HWND window = Window();
    for (const long before : {1L, 2L, 3L, 77L}) {
        long showType = before;
        ComPtr<IDispatch> config;
        CHECK(MakeObject<ConfigControl>()->ConfigInstance(&showType, &config) == S_OK);
        CHECK(showType == before);
        CHECK(config.Get() == first.Get());
        CHECK(Window() == window);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a count that is full lets ConfigInstance show the window and then fail with overflow") {
    Instance(FormHide);
    const HWND window = Window();
    for (const long showType : {2L, 1L}) {
        g_lngClientCount = LONG_MAX;
        ComPtr<IDispatch> config;
        CHECK(Instance(showType, config) == kOverflow);
        CHECK(config == nullptr);
        CHECK(g_lngClientCount == LONG_MAX);
        CHECK(Window() == window);
        CHECK(IsShown() == (showType == formShow));
    }
    g_lngClientCount = LONG_MAX - 1;
    Instance(FormHide);
    CHECK(g_lngClientCount == LONG_MAX);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a count that cannot fall lets ReleaseConfig fail with overflow, and the manager goes on") {
    Instance(FormHide);
    g_lngClientCount = LONG_MIN;
    {
        const NotedEnd end;
        CHECK(control->ReleaseConfig() == kOverflow);
        PumpFor(50);
        CHECK(NotedEnd::Count() == 0);
    }
    CHECK(g_lngClientCount == LONG_MIN);
    CHECK(IsWindow(Window()));
    Instance(FormHide);
    CHECK(g_lngClientCount == LONG_MIN + 1);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a call without a place for its argument or its result fails and changes nothing") {
    long showType = formShow;
    ComPtr<IDispatch> config;
    CHECK(control->ConfigInstance(nullptr, &config) == E_POINTER);
    CHECK(control->ConfigInstance(&showType, nullptr) == E_POINTER);
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);

    Instance(FormHide);
    CHECK(g_oConfig->get_ConfigHwnd(nullptr) == E_POINTER);
    CHECK(g_oConfig->get_ConfigForm(nullptr) == E_POINTER);
    CHECK(g_oConfig->get_ShellIconClass(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_b_OKtoUnload(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_m_oShellIcon(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_m_oPopup(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_Visible(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_Caption(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_hWnd(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_picShellIcon(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_picTray(0, nullptr) == E_POINTER);
    CHECK(g_frmConfig->ControlHwnd(nullptr, nullptr) == E_POINTER);
    LONG handle = 1;
    CHECK(g_frmConfig->ControlHwnd(nullptr, &handle) == HresultOf(ErrorNumber::InvalidProcedureCall));
    CHECK(handle == 0);
}
