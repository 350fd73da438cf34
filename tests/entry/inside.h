// The manager in the test's own process: the same objects that its clients reach, made and called directly.
#pragma once

#include <doctest.h>

#include "app/config.h"
#include "app/config_control.h"
#include "app/config_globals.h"
#include "app/frm_config.h"
#include "platform/automation_error.h"
#include "tests/support/import_patch.h"
#include "tests/support/test_hive.h"
#include "tray/bas_shell_notify.h"

// The manager with a store of its own. The engine is whatever CoCreateInstance gives.
struct Inside {
    TestHive user{HKEY_CURRENT_USER};
    ComPtr<ConfigControl> control = MakeObject<ConfigControl>();

    Inside() = default;
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside() {
        g_oConfig.Reset();
        g_frmConfig.Reset();
        g_lngConfigHwnd = 0;
        g_lngClientCount = 0;
        g_strLoaderPath.clear();
    }

    HRESULT Instance(long showType, ComPtr<IDispatch>& config) {
        return control->ConfigInstance(&showType, &config);
    }

    ComPtr<IDispatch> Instance(long showType) {
        ComPtr<IDispatch> config;
        ThrowIfFailed(Instance(showType, config));
        return config;
    }
};

inline HRESULT WINAPI NoEngine(REFCLSID, IUnknown*, DWORD, REFIID, void**) {
    return REGDB_E_CLASSNOTREG;
}

struct InsideWithoutEngine : Inside {
    ImportPatch engine{"ole32.dll", "CoCreateInstance", &NoEngine};
};

// What the process may be unloaded by: its locks, counted.
inline ULONG Locks() {
    CoAddRefServerProcess();
    return CoReleaseServerProcess();
}
