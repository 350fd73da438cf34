// Windows that cannot be made or loaded.
#include <doctest.h>

#include <new>

#include "store/settings_schema.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/support/import_fake.h"

namespace {

// A dialog that cannot be made, or defaults for which there is no memory.
struct Failure {
    std::string what;
    int dialog;
    HRESULT result;
};

const Failure kNoDefaults{"the defaults", 0, E_OUTOFMEMORY};
const Failure kFailures[] = {{"the window", IDD_CONFIG, HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES)},
                             {"a page", IDD_PAGE_ABOUT, HRESULT_FROM_WIN32(ERROR_NO_MORE_USER_HANDLES)},
                             kNoDefaults};

// While it exists this cannot be done.
class Failing {
public:
    explicit Failing(const Failure& failure) : m_dialog(failure.dialog) {}

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
            if (m_dialog == 0) throw std::bad_alloc();
            return m_write.Original(key, name, reserved, type, data, size);
        }};
};

size_t WindowCount() {
    size_t count = 0;
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"#32770", L"Calvane")) != nullptr)
        ++count;
    return count;
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
    const Failing failing(kNoDefaults);
    ComPtr<IDispatch> config;
    CHECK(inside.Instance(FormHide, config) == kNoDefaults.result);
    CHECK(result == CO_E_SERVER_STOPPING);
    CHECK(late == nullptr);
    CheckNothingThere();
}

TEST_CASE("a window that cannot be made or loaded, at first or again, is an error, and a later call works") {
    for (const Failure& failure : kFailures) {
        for (const bool isAgain : {false, true}) {
            CAPTURE(failure.what);
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
                const Failing failing(failure);
                ComPtr<IDispatch> config;
                CHECK(inside.Instance(formShow, config) == failure.result);
                CHECK(config == nullptr);
                if (!isAgain) CheckNothingThere();
                // A window made again that only lacks its settings waits for them.
                const bool waits = isAgain && failure.dialog == 0;
                CHECK(WindowCount() == (waits ? 1 : 0));
                if (!waits) CHECK(Locks() == locks);
                if (isAgain) {
                    VARIANT handle;
                    CHECK(g_oConfig->get_ConfigHwnd(&handle) == failure.result);
                    CHECK(handle.vt == VT_EMPTY);
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
