// Windows that cannot be made.
#include <doctest.h>

#include "app/resource.h"
#include "tests/entry/inside.h"

namespace {

const ImportPatch* makeDialog = nullptr;
int refused = 0;  // the dialog that is not made

HWND WINAPI Refuse(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure, LPARAM parameter) {
    if (resource == MAKEINTRESOURCEW(refused)) {
        SetLastError(ERROR_NO_MORE_USER_HANDLES);
        return nullptr;
    }
    return makeDialog->Original<decltype(&CreateDialogParamW)>()(instance, resource, parent, procedure,
                                                                 parameter);
}

size_t WindowCount() {
    size_t count = 0;
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"#32770", L"Calvane")) != nullptr) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process == GetCurrentProcessId()) ++count;
    }
    return count;
}

}  // namespace

TEST_CASE("a window or a page that cannot be made gives the caller an error, and a later call works") {
    for (const int dialog : {IDD_CONFIG, IDD_PAGE_SETTINGS, IDD_PAGE_ABOUT}) {
        CAPTURE(dialog);
        InsideWithoutEngine inside;
        const ULONG locks = Locks();
        {
            const ImportPatch patch("user32.dll", "CreateDialogParamW", &Refuse);
            makeDialog = &patch;
            refused = dialog;
            for (const long showType : {2L, 1L, 3L}) {
                ComPtr<IDispatch> config;
                CHECK(inside.Instance(showType, config) == HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES));
                CHECK(config == nullptr);
                CHECK(g_oConfig == nullptr);
                CHECK(g_frmConfig == nullptr);
                CHECK(g_lngConfigHwnd == 0);
                CHECK(g_lngClientCount == 0);
                CHECK(WindowCount() == 0);
                CHECK(Locks() == locks);
            }
        }
        const auto config = inside.Instance(FormHide);
        CHECK(config != nullptr);
        CHECK(g_lngClientCount == 1);
        CHECK(WindowCount() == 1);
        CHECK(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd))));
    }
}

TEST_CASE(
    "a window that cannot be made again after its unloading gives the caller an error, and a later call "
    "works") {
    for (const int dialog : {IDD_CONFIG, IDD_PAGE_LOG}) {
        CAPTURE(dialog);
        InsideWithoutEngine inside;
        const auto config = inside.Instance(FormHide);
        g_frmConfig->Unload();
        const ULONG locks = Locks();
        {
            const ImportPatch patch("user32.dll", "CreateDialogParamW", &Refuse);
            makeDialog = &patch;
            refused = dialog;
            ComPtr<IDispatch> again;
            CHECK(inside.Instance(formShow, again) == HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES));
            VARIANT handle;
            CHECK(g_oConfig->get_ConfigHwnd(&handle) == HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES));
            CHECK(handle.vt == VT_EMPTY);
            CHECK(WindowCount() == 0);
            CHECK(Locks() == locks);
        }
        CHECK(inside.Instance(formShow).Get() == config.Get());
        CHECK(WindowCount() == 1);
    }
}
