// Windows that cannot be made or loaded.
#include <doctest.h>

#include <new>

#include "store/settings_schema.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/support/import_fake.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"

namespace {

// In place of a dialog: the defaults.
constexpr int kDefaults = 0;

// While it exists a dialog cannot be made, or there is no memory for the defaults.
class Failing {
public:
    explicit Failing(int dialog) : m_dialog(dialog) {}

    HRESULT Result() const {
        return m_dialog == kDefaults ? E_OUTOFMEMORY : HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES);
    }

private:
    const int m_dialog;
    const ImportFake<"CreateDialogParamW", decltype(&CreateDialogParamW)> m_make{
        "user32.dll",
        [this](HINSTANCE instance, LPCWSTR resource, HWND parent, DLGPROC procedure,
               LPARAM parameter) -> HWND {
            if (resource != MAKEINTRESOURCEW(m_dialog))
                return m_make.Original(instance, resource, parent, procedure, parameter);
            SetLastError(ERROR_NO_MORE_USER_HANDLES);
            return nullptr;
        }};
    const ImportFake<"RegSetValueExA", decltype(&RegSetValueExA)> m_write{
        "advapi32.dll",
        [this](HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
            if (m_dialog == kDefaults) throw std::bad_alloc();
            return m_write.Original(key, name, reserved, type, data, size);
        }};
};

size_t WindowCount() {
    return DialogsOf(GetCurrentProcessId(), false).size();
}

void CheckNothingThere() {
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngConfigHwnd == 0);
    CHECK(g_lngClientCount == 0);
    CHECK(WindowCount() == 0);
}

}  // namespace

TEST_CASE("a client that comes in while a window that could not be loaded is taken down is refused") {
    Inside inside;
    FakeEngine engine;
    HRESULT result = S_OK;
    ComPtr<IDispatch> late;
    engine.script.within["ReleasePopup"] = [&] { result = inside.Instance(formShow, late); };
    const Failing failing(kDefaults);
    ComPtr<IDispatch> config;
    CHECK(inside.Instance(FormHide, config) == failing.Result());
    CHECK(result == CO_E_SERVER_STOPPING);
    CHECK(late == nullptr);
    CheckNothingThere();
}

TEST_CASE("a window that cannot be made or loaded, at first or again, is an error, and a later call works") {
    for (const int dialog : {IDD_CONFIG, IDD_PAGE_ABOUT, kDefaults}) {
        for (const bool isAgain : {false, true}) {
            CAPTURE(dialog);
            CAPTURE(isAgain);
            InsideWithoutEngine inside;
            ComPtr<IDispatch> first;
            if (isAgain) {
                first = inside.Instance(FormHide);
                g_frmConfig->Unload();
                inside.user.Delete(Schema::kSettingsKey, L"First Time");
            }
            const ULONG locks = Locks();
            {
                const Failing failing(dialog);
                ComPtr<IDispatch> config;
                CHECK(inside.Instance(formShow, config) == failing.Result());
                CHECK(config == nullptr);
                if (!isAgain) CheckNothingThere();
                // A window made again that only lacks its settings waits for them.
                const bool waits = isAgain && dialog == kDefaults;
                CHECK(WindowCount() == (waits ? 1 : 0));
                if (!waits) CHECK(Locks() == locks);
                if (isAgain) {
                    VARIANT handle;
                    CHECK(g_oConfig->get_ConfigHwnd(&handle) == failing.Result());
                    CHECK(handle.vt == VT_EMPTY);
                    LONG number = 1;
                    CHECK(g_frmConfig->get_hWnd(&number) == failing.Result());
                    CHECK(number == 0);
                    CHECK_FALSE(IsShown());
                }
            }
            const auto config = inside.Instance(formShow);
            CHECK(IsShown());
            CHECK(WindowCount() == 1);
            CHECK(g_lngClientCount == (isAgain ? 2 : 1));
            CHECK(inside.user.Text(Schema::kSettingsKey, L"First Time") == L"True");
            if (isAgain) CHECK(config.Get() == first.Get());
        }
    }
}
