// The manager in the test's own process: the same objects that its clients reach, made and called directly,
// and the configuration window as its user has it before him.
#pragma once

#include <doctest.h>

#include <windows.h>

#include <initializer_list>
#include <stdexcept>
#include <vector>

#include "app/config.h"
#include "app/config_control.h"
#include "app/config_globals.h"
#include "app/frm_config.h"
#include "app/resource.h"
#include "platform/automation_error.h"
#include "tests/support/import_fake.h"
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

    // All that clients can have when there is a window: the control, Config, its form, the icon, a picture.
    std::vector<ComPtr<IDispatch>> Objects() const {
        ComPtr<IDispatch> icon;
        ComPtr<IDispatch> picture;
        ThrowIfFailed(g_frmConfig->get_m_oShellIcon(&icon));
        ThrowIfFailed(g_frmConfig->get_picShellIcon(&picture));
        return {static_cast<IDispatch*>(control.Get()), static_cast<IDispatch*>(g_oConfig.Get()),
                static_cast<IDispatch*>(g_frmConfig.Get()), icon, picture};
    }
};

struct InsideWithoutEngine : Inside {
    const ImportFake<"CoCreateInstance", decltype(&CoCreateInstance)> engine{
        "ole32.dll", [](REFCLSID, IUnknown*, DWORD, REFIID, void**) { return REGDB_E_CLASSNOTREG; }};
};

// What the process may be unloaded by: its locks, counted.
inline ULONG Locks() {
    CoAddRefServerProcess();
    return CoReleaseServerProcess();
}

inline HWND Window() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd));
}

inline bool IsShown() {
    VARIANT_BOOL visible = VARIANT_FALSE;
    CHECK(g_frmConfig->get_Visible(&visible) == S_OK);
    return visible == VARIANT_TRUE;
}

// A control of the frame or of a page.
inline HWND ControlOf(int id) {
    if (const HWND control = GetDlgItem(Window(), id)) return control;
    for (HWND page = GetWindow(Window(), GW_CHILD); page != nullptr; page = GetWindow(page, GW_HWNDNEXT)) {
        if (const HWND control = GetDlgItem(page, id)) return control;
    }
    throw std::runtime_error("no such control");
}

inline void Click(int id) {
    SendMessageW(ControlOf(id), BM_CLICK, 0, 0);
}

inline int SelectedTab() {
    return static_cast<int>(SendDlgItemMessageW(Window(), IDC_TAB, TCM_GETCURSEL, 0, 0));
}

inline bool IsFormMessage(MSG message) {
    return g_frmConfig->IsFormMessage(message);
}

// A key that is pressed while this window has the focus.
inline MSG Key(HWND window, WPARAM key) {
    MSG message{};
    message.hwnd = window;
    message.message = WM_KEYDOWN;
    message.wParam = key;
    message.lParam = 1;
    return message;
}

// The state of the keyboard as this thread sees it.
struct HeldKeys {
    explicit HeldKeys(std::initializer_list<int> keys) {
        GetKeyboardState(before);
        BYTE state[256]{};
        for (const int key : keys)
            state[key] = 0x80;
        SetKeyboardState(state);
    }
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;
    ~HeldKeys() { SetKeyboardState(before); }

    BYTE before[256]{};
};
