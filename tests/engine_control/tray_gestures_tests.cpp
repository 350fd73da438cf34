#include <doctest.h>

#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "platform/com/event_source.h"
#include "shell_notification_interface.h"
#include "tests/support/import_patch.h"
#include "tests/support/plain_window.h"
#include "tray/shell_notification.h"
#include "tray/tray_gestures.h"

namespace {

using Calls = std::vector<std::string>;

// An object with the icon's events, which unlike the icon raises them.
class RaisingIcon final : public IUnknown {
public:
    RaisingIcon() : events(*this, __uuidof(__ShellNotification)) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = IsEqualIID(id, IID_IConnectionPointContainer) ? static_cast<void*>(events.Container())
                  : IsEqualIID(id, IID_IUnknown)                ? static_cast<void*>(this)
                                                                : nullptr;
        return *object == nullptr ? E_NOINTERFACE : S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    HRESULT Raise(std::vector<VARIANT> lastToFirst) {
        ComPtr<IConnectionPoint> point;
        events.Container()->FindConnectionPoint(__uuidof(__ShellNotification), &point);
        ComPtr<IEnumConnections> connections;
        point->EnumConnections(&connections);
        CONNECTDATA connection{};
        if (connections->Next(1, &connection, nullptr) != S_OK) return S_FALSE;
        ComPtr<IDispatch> sink;
        connection.pUnk->QueryInterface(IID_PPV_ARGS(&sink));
        connection.pUnk->Release();
        DISPPARAMS arguments{lastToFirst.data(), nullptr, static_cast<UINT>(lastToFirst.size()), 0};
        return sink->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments, nullptr, nullptr,
                            nullptr);
    }

    HRESULT RaiseMouseUp(float x) {
        short button = 2;
        short shift = 0;
        float y = 0;
        std::vector<VARIANT> arguments(4);
        arguments[3].vt = VT_BYREF | VT_I2;
        arguments[3].piVal = &button;
        arguments[2].vt = VT_BYREF | VT_I2;
        arguments[2].piVal = &shift;
        arguments[1].vt = VT_BYREF | VT_R4;
        arguments[1].pfltVal = &x;
        arguments[0].vt = VT_BYREF | VT_R4;
        arguments[0].pfltVal = &y;
        return Raise(arguments);
    }

    EventSource events;
};

// A configuration window that keeps what is asked of it, and the calls to Windows in between.
struct GesturesFixture : TrayWindow {
    GesturesFixture() { current = this; }
    ~GesturesFixture() { current = nullptr; }

    void ShowModeless() override { calls.push_back("Show"); }
    void PopupTrayMenu(bool pauseIsDefault) override {
        calls.push_back(pauseIsDefault ? "Pop up, pause is default" : "Pop up");
    }

    static BOOL WINAPI SetForeground(HWND hwnd) {
        current->calls.push_back("SetForegroundWindow");
        current->target = hwnd;
        return FALSE;
    }

    static BOOL WINAPI Post(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        current->calls.push_back("Post " + std::to_string(message) + ' ' + std::to_string(wParam) + ' ' +
                                 std::to_string(lParam) + (current->b_OKtoUnload ? " unloading" : ""));
        current->target = hwnd;
        return TRUE;
    }

    void MouseUp(float x) {
        short button = 1;
        short shift = 2;
        float y = 3;
        gestures.m_oShellIcon_MouseUp(button, shift, x, y);
    }

    static inline GesturesFixture* current = nullptr;

    PlainWindow window;
    RaisingIcon icon;
    TrayMenu menu;
    bool b_OKtoUnload = false;
    TrayGestures gestures{menu, *this, b_OKtoUnload};
    Calls calls;
    HWND target = nullptr;
    const ImportPatch setForegroundWindow{"user32.dll", "SetForegroundWindow", &SetForeground};
    const ImportPatch post{"user32.dll", "PostMessageA", &Post};
};

}  // namespace

TEST_CASE_FIXTURE(GesturesFixture, "opening the configuration shows the window") {
    menu.mnuShowConfig_Click();
    CHECK(calls == Calls{"Show"});
    CHECK_FALSE(b_OKtoUnload);
}

TEST_CASE_FIXTURE(GesturesFixture, "leaving lets the window unload, then posts it a close message") {
    gestures.Connect(window.Hwnd(), &icon);
    menu.mnuExit_Click();
    CHECK(calls == Calls{"Post 16 0 0 unloading"});
    CHECK(target == window.Hwnd());
    CHECK(b_OKtoUnload);
}

TEST_CASE_FIXTURE(GesturesFixture, "leaving works although the icon has no events") {
    bool failed = false;
    try {
        gestures.Connect(window.Hwnd(), nullptr);
    } catch (const AutomationError&) {
        failed = true;
    }
    CHECK(failed);
    menu.mnuExit_Click();
    CHECK(target == window.Hwnd());
}

TEST_CASE_FIXTURE(GesturesFixture,
                  "a double click in twips brings the window to the foreground and shows it") {
    gestures.Connect(window.Hwnd(), &icon);
    MouseUp(7725);
    CHECK(calls == Calls{"SetForegroundWindow", "Show"});
    CHECK(target == window.Hwnd());
}

TEST_CASE_FIXTURE(GesturesFixture,
                  "a right-button release in twips pops up the menu without a default item") {
    MouseUp(7755);
    CHECK(calls == Calls{"SetForegroundWindow", "Pop up"});
}

TEST_CASE_FIXTURE(GesturesFixture, "any other position only brings the window to the foreground") {
    for (const float x : {0.0f, 515.0f, 517.0f, 7724.0f, 7724.5f, 7740.0f, 7756.0f, -7725.0f}) {
        CAPTURE(x);
        calls.clear();
        MouseUp(x);
        CHECK(calls == Calls{"SetForegroundWindow"});
    }
}

TEST_CASE_FIXTURE(GesturesFixture, "the icon's event reaches its handler until it is disconnected") {
    gestures.Connect(window.Hwnd(), &icon);
    CHECK(icon.events.ConnectionCount() == 1);
    CHECK(icon.RaiseMouseUp(7725) == S_OK);
    CHECK(icon.RaiseMouseUp(7755) == S_OK);
    CHECK(calls == Calls{"SetForegroundWindow", "Show", "SetForegroundWindow", "Pop up"});

    gestures.Disconnect();
    CHECK(icon.events.ConnectionCount() == 0);
    CHECK(icon.RaiseMouseUp(7725) == S_FALSE);
    CHECK(calls.size() == 4);
}

TEST_CASE_FIXTURE(GesturesFixture, "an event with other arguments than its own is refused") {
    gestures.Connect(window.Hwnd(), &icon);
    CHECK(icon.Raise({}) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(icon.Raise(std::vector<VARIANT>(4)) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(calls.empty());
}

TEST_CASE_FIXTURE(GesturesFixture, "the real icon can be listened to and is let go of again") {
    const auto real = MakeObject<ShellNotification>();
    gestures.Connect(window.Hwnd(), static_cast<IDispatch*>(real.Get()));
    gestures.Disconnect();
    CHECK(real->AddRef() == 2);
    CHECK(real->Release() == 1);
}
