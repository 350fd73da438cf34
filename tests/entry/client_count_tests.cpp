// The count of clients, and calls that cannot be carried out.
#include <doctest.h>

#include <climits>

#include "tests/entry/inside.h"
#include "tests/support/message_pump.h"

namespace {

constexpr HRESULT kOverflow = static_cast<HRESULT>(0x800A0006);

bool hasEnded = false;

BOOL WINAPI NoteEnd(HANDLE, UINT) {
    hasEnded = true;
    return TRUE;
}

}  // namespace

TEST_CASE("each ConfigInstance adds one to the count of clients") {
    InsideWithoutEngine inside;
    CHECK(g_lngClientCount == 0);
    for (const long showType : {2L, 0L, 4L, -1L})
        inside.Instance(showType);
    CHECK(g_lngClientCount == 4);
}

TEST_CASE("a count that is full lets ConfigInstance fail with overflow and hands nothing out") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const LONG window = g_lngConfigHwnd;
    g_lngClientCount = LONG_MAX;
    ComPtr<IDispatch> config;
    CHECK(inside.Instance(FormHide, config) == kOverflow);
    CHECK(config == nullptr);
    CHECK(g_lngClientCount == LONG_MAX);
    CHECK(g_lngConfigHwnd == window);
    CHECK(g_oConfig != nullptr);
    CHECK_FALSE(IsWindowVisible(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))));

    g_lngClientCount = LONG_MAX - 1;
    CHECK(inside.Instance(FormHide, config) == S_OK);
    CHECK(g_lngClientCount == LONG_MAX);
}

TEST_CASE("the window is shown before the count is found to be full") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    g_lngClientCount = LONG_MAX;
    ComPtr<IDispatch> config;
    CHECK(inside.Instance(formShow, config) == kOverflow);
    CHECK(config == nullptr);
    VARIANT_BOOL visible = VARIANT_FALSE;
    CHECK(g_frmConfig->get_Visible(&visible) == S_OK);
    CHECK(visible == VARIANT_TRUE);
}

TEST_CASE("a count that cannot fall lets ReleaseConfig fail with overflow, and the manager goes on") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    g_lngClientCount = LONG_MIN;
    {
        const ImportPatch end("kernel32.dll", "TerminateProcess", &NoteEnd);
        CHECK(inside.control->ReleaseConfig() == kOverflow);
        PumpFor(50);
    }
    CHECK_FALSE(hasEnded);
    CHECK(g_lngClientCount == LONG_MIN);
    REQUIRE(g_frmConfig != nullptr);
    CHECK(g_frmConfig->Handle() == g_lngConfigHwnd);
    CHECK(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd))));
    inside.Instance(FormHide);
    CHECK(g_lngClientCount == LONG_MIN + 1);
}

TEST_CASE("a call without a place for its argument or its result fails and changes nothing") {
    InsideWithoutEngine inside;
    long showType = formShow;
    ComPtr<IDispatch> config;
    CHECK(inside.control->ConfigInstance(nullptr, &config) == E_POINTER);
    CHECK(inside.control->ConfigInstance(&showType, nullptr) == E_POINTER);
    CHECK(inside.control->ConfigInstance(nullptr, nullptr) == E_POINTER);
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);

    inside.Instance(FormHide);
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
