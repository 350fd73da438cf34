// Windows that cannot be made or loaded.
#include <doctest.h>

#include <new>

#include "app/resource.h"
#include "store/settings_schema.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"

namespace {

struct Failure {
    int dialog;  // that is not made; 0 where memory runs out while the defaults are written
    HRESULT result;
};

constexpr Failure kNoDefaults{0, E_OUTOFMEMORY};
constexpr Failure kFailures[] = {{IDD_CONFIG, HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES)},
                                 {IDD_PAGE_SETTINGS, HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES)},
                                 {IDD_PAGE_ABOUT, HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES)},
                                 kNoDefaults};

// While it exists this cannot be done. One at a time.
class Failing {
public:
    explicit Failing(const Failure& failure) {
        s_current = this;
        s_dialog = failure.dialog;
    }

private:
    static HWND WINAPI Make(HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
                            LPARAM parameter) {
        if (resource == MAKEINTRESOURCEW(s_dialog)) {
            SetLastError(ERROR_NO_MORE_USER_HANDLES);
            return nullptr;
        }
        return s_current->m_make.Original<decltype(&CreateDialogParamW)>()(instance, resource, parent,
                                                                           procedure, parameter);
    }

    static LONG WINAPI Write(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                             DWORD size) {
        if (s_dialog == 0) throw std::bad_alloc();
        return s_current->m_write.Original<decltype(&RegSetValueExA)>()(key, name, reserved, type, data,
                                                                        size);
    }

    static inline const Failing* s_current = nullptr;
    static inline int s_dialog = 0;
    const ImportPatch m_make{"user32.dll", "CreateDialogParamW", &Make};
    const ImportPatch m_write{"advapi32.dll", "RegSetValueExA", &Write};
};

size_t WindowCount() {
    size_t count = 0;
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"#32770", L"Calvane")) != nullptr)
        ++count;
    return count;
}

void CheckWorks(InsideWithoutEngine& inside) {
    inside.Instance(formShow);
    CHECK(IsShown());
    CHECK(WindowCount() == 1);
    CHECK(inside.user.Text(Schema::kSettingsKey, L"First Time") == L"True");
}

}  // namespace

TEST_CASE("a start that fails gives the caller an error and leaves nothing behind, and a later call works") {
    for (const Failure& failure : kFailures) {
        CAPTURE(failure.dialog);
        InsideWithoutEngine inside;
        const ULONG locks = Locks();
        for (const long showType : {2L, 1L, 3L}) {
            const Failing failing(failure);
            ComPtr<IDispatch> config;
            CHECK(inside.Instance(showType, config) == failure.result);
            CHECK(config == nullptr);
            CHECK(g_oConfig == nullptr);
            CHECK(g_frmConfig == nullptr);
            CHECK(g_lngConfigHwnd == 0);
            CHECK(g_lngClientCount == 0);
            CHECK(WindowCount() == 0);
            CHECK(Locks() == locks);
        }
        CheckWorks(inside);
        CHECK(g_lngClientCount == 1);
    }
}

TEST_CASE("a client that comes in while a window that could not be loaded is taken down is refused") {
    for (const long showType : {2L, 1L, 3L}) {
        CAPTURE(showType);
        Inside inside;
        FakeEngine engine;
        HRESULT result = S_OK;
        ComPtr<IDispatch> late;
        engine.script.within["ReleasePopup"] = [&] { result = inside.Instance(showType, late); };
        const Failing failing(kNoDefaults);
        ComPtr<IDispatch> config;
        CHECK(inside.Instance(FormHide, config) == kNoDefaults.result);
        CHECK(result == CO_E_SERVER_STOPPING);
        CHECK(late == nullptr);
        CHECK(g_oConfig == nullptr);
        CHECK(g_frmConfig == nullptr);
        CHECK(WindowCount() == 0);
    }
}

TEST_CASE("a window that cannot be made or loaded again gives the caller an error, and a later call works") {
    for (const Failure& failure : kFailures) {
        CAPTURE(failure.dialog);
        InsideWithoutEngine inside;
        const auto config = inside.Instance(FormHide);
        g_frmConfig->Unload();
        inside.user.Delete(Schema::kSettingsKey, L"First Time");
        const ULONG locks = Locks();
        {
            const Failing failing(failure);
            ComPtr<IDispatch> again;
            CHECK(inside.Instance(formShow, again) == failure.result);
            VARIANT handle;
            CHECK(g_oConfig->get_ConfigHwnd(&handle) == failure.result);
            CHECK(handle.vt == VT_EMPTY);
            CHECK_FALSE(IsShown());
            // A window that only lacks its settings waits for them.
            CHECK(WindowCount() == (failure.dialog == 0 ? 1 : 0));
            if (failure.dialog != 0) CHECK(Locks() == locks);
            CHECK(g_lngClientCount == 1);
        }
        CheckWorks(inside);
        CHECK(inside.Instance(FormHide).Get() == config.Get());
    }
}
