// What keeps the process alive, seen from inside: the same objects, made in the test's own process.
#include <doctest.h>

#include <climits>

#include "app/config.h"
#include "app/config_control.h"
#include "app/config_globals.h"
#include "app/frm_config.h"
#include "platform/server_process.h"
#include "tests/support/import_patch.h"
#include "tests/support/test_hive.h"

namespace {

ULONG Locks() {
    CoAddRefServerProcess();
    return CoReleaseServerProcess();
}

HRESULT WINAPI NoEngine(REFCLSID, IUnknown*, DWORD, REFIID, void**) { return REGDB_E_CLASSNOTREG; }

// The manager in this process, without an engine and with a store of its own.
struct Inside {
    TestHive user{HKEY_CURRENT_USER};
    ImportPatch engine{"ole32.dll", "CoCreateInstance", &NoEngine};
    ComPtr<ConfigControl> control = MakeObject<ConfigControl>();

    ~Inside() {
        g_oConfig.Reset();
        g_frmConfig.Reset();
        g_lngConfigHwnd = 0;
        g_lngClientCount = 0;
    }

    ComPtr<IDispatch> Instance(long showType) {
        ComPtr<IDispatch> config;
        ThrowIfFailed(control->ConfigInstance(&showType, &config));
        return config;
    }
};

}  // namespace

TEST_CASE("the window, each client's control and each client's reference lock the process") {
    const ULONG before = Locks();
    {
        Inside inside;
        CHECK(Locks() == before + 1);
        {
            const auto config = inside.Instance(FormHide);
            const ULONG held = Locks();
            CHECK(held > before + 1);
        }
        const ULONG loaded = Locks();
        g_frmConfig->Unload();
        CHECK(Locks() < loaded);
        CHECK(Locks() == before + 1);
        inside.control.Reset();
        CHECK(Locks() == before);
    }
    CHECK(Locks() == before);
}
