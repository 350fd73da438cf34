#include <doctest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/automation_error.h"
#include "shell_notification_interface.h"
#include "tests/support/error_of.h"
#include "tests/support/import_patch.h"
#include "tests/support/plain_window.h"
#include "tray/shell_notification.h"
#include "tray/tray_gestures.h"

namespace {

using Calls = std::vector<std::string>;

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

    void Connect() { gestures.Connect(window.Hwnd(), static_cast<IDispatch*>(icon.Get())); }

    // Calls the listener to the icon's event, which the icon itself never raises. S_FALSE where nobody
    // listens.
    HRESULT Raise(std::vector<VARIANT> lastToFirst) {
        ComPtr<IConnectionPointContainer> container;
        icon.As(&container);
        ComPtr<IConnectionPoint> point;
        container->FindConnectionPoint(__uuidof(__ShellNotification), &point);
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

    static inline GesturesFixture* current = nullptr;

    PlainWindow window;
    ComPtr<ShellNotification> icon = MakeObject<ShellNotification>();
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

TEST_CASE_FIXTURE(
    GesturesFixture,
    "leaving lets the window unload, then posts it a close message, whether the icon has events or not") {
    SUBCASE("with events") {
        Connect();
    }
    SUBCASE("without") {
        CHECK(ErrorOf([&] { gestures.Connect(window.Hwnd(), nullptr); }) != S_OK);
    }
    menu.mnuExit_Click();
    CHECK(calls == Calls{"Post 16 0 0 unloading"});
    CHECK(target == window.Hwnd());
    CHECK(b_OKtoUnload);
}

TEST_CASE_FIXTURE(
    GesturesFixture,
    "any mouse event of the icon brings the window to the foreground; a double click, in twips, "
    "shows it, a release of the right button pops up the menu without a default item") {
    Connect();
    const std::pair<float, Calls> rows[] = {
        {7725.0f, {"Show"}}, {7755.0f, {"Pop up"}}, {0.0f, {}},    {515.0f, {}},  {517.0f, {}},
        {7724.0f, {}},       {7724.5f, {}},         {7740.0f, {}}, {7756.0f, {}}, {-7725.0f, {}}};
    for (const auto& [x, done] : rows) {
        CAPTURE(x);
        calls.clear();
        CHECK(RaiseMouseUp(x) == S_OK);
        Calls expected{"SetForegroundWindow"};
        expected.insert(expected.end(), done.begin(), done.end());
        CHECK(calls == expected);
        CHECK(target == window.Hwnd());
    }
}

TEST_CASE_FIXTURE(GesturesFixture, "the icon's event reaches its handler until it is disconnected") {
    Connect();
    CHECK(RaiseMouseUp(0) == S_OK);
    gestures.Disconnect();
    CHECK(RaiseMouseUp(0) == S_FALSE);
    CHECK(icon->AddRef() == 2);
    CHECK(icon->Release() == 1);
}

TEST_CASE_FIXTURE(GesturesFixture, "an event with other arguments than its own is refused") {
    Connect();
    CHECK(Raise({}) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(Raise(std::vector<VARIANT>(4)) == HresultOf(ErrorNumber::TypeMismatch));
    CHECK(calls.empty());
}
