// Loads that fail.
#include <doctest.h>

#include <new>

#include "tests/entry/inside.h"

namespace {

constexpr wchar_t kSettings[] = L"Software\\Calvane\\Settings";

// Memory runs out while the first default is written.
LONG WINAPI RunOutOfMemory(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD) {
    throw std::bad_alloc();
}

struct NoMemoryForDefaults {
    ImportPatch setValue{"advapi32.dll", "RegSetValueExA", &RunOutOfMemory};
};

bool IsShown() {
    VARIANT_BOOL visible = VARIANT_FALSE;
    CHECK(g_frmConfig->get_Visible(&visible) == S_OK);
    return visible == VARIANT_TRUE;
}

}  // namespace

TEST_CASE("an error while the defaults are written passes to the caller, and a later call starts again") {
    InsideWithoutEngine inside;
    const ULONG locks = Locks();
    {
        const NoMemoryForDefaults none;
        ComPtr<IDispatch> config;
        CHECK(inside.Instance(formShow, config) == E_OUTOFMEMORY);
        CHECK(config == nullptr);
    }
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngConfigHwnd == 0);
    CHECK(g_lngClientCount == 0);
    CHECK(Locks() == locks);
    CHECK(FindWindowW(L"#32770", L"Calvane") == nullptr);

    inside.Instance(formShow);
    CHECK(IsShown());
    CHECK(inside.user.Text(kSettings, L"First Time") == L"True");
}

TEST_CASE("a window made again whose load fails is loaded by the next call") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    g_frmConfig->Unload();
    inside.user.Delete(kSettings, L"First Time");
    {
        const NoMemoryForDefaults none;
        ComPtr<IDispatch> config;
        CHECK(inside.Instance(formShow, config) == E_OUTOFMEMORY);
        VARIANT handle;
        CHECK(g_oConfig->get_ConfigHwnd(&handle) == E_OUTOFMEMORY);
        CHECK(handle.vt == VT_EMPTY);
        CHECK_FALSE(IsShown());
        CHECK(g_lngClientCount == 1);
    }
    inside.Instance(formShow);
    CHECK(IsShown());
    CHECK(inside.user.Text(kSettings, L"First Time") == L"True");
}
