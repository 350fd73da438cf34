// ConfigControl and Config as clients in other processes see them.
#include <doctest.h>

#include "platform/automation_error.h"
#include "platform/com/event_connection.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"

namespace {

ComPtr<IUnknown> Identity(IDispatch* object) {
    ComPtr<IUnknown> identity;
    ThrowIfFailed(object->QueryInterface(IID_PPV_ARGS(&identity)));
    return identity;
}

ComPtr<_ConfigControl> AnotherControl() {
    ComPtr<_ConfigControl> control;
    ThrowIfFailed(
        CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control)));
    return control;
}

size_t ConfigWindowCount() {
    size_t count = 0;
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"#32770", L"Calvane")) != nullptr)
        ++count;
    return count;
}

size_t ManagerCount() {
    return ProcessesOf(L"SentrelConfig.exe").size();
}

bool NoManagerIsLeft() {
    return ProgramEnds(L"SentrelConfig.exe");
}

}  // namespace

TEST_CASE("clients share one Config and one window, and one ReleaseConfig ends the manager for all of them") {
    Manager manager;
    const auto config = manager.Instance(FormHide);
    const HWND window = manager.Window();
    const auto other = AnotherControl();
    LONG hidden = FormHide;
    ComPtr<IDispatch> otherConfig;
    REQUIRE(other->ConfigInstance(&hidden, &otherConfig) == S_OK);
    CHECK(Identity(otherConfig.Get()).Get() == Identity(config.Get()).Get());
    CHECK(Identity(manager.Instance(FormHide).Get()).Get() == Identity(config.Get()).Get());
    CHECK(ConfigWindowCount() == 1);

    CHECK(other->ReleaseConfig() == S_OK);
    CHECK(IsWindow(window) == FALSE);
    CHECK(manager.WaitForEnd());
    CHECK_THROWS_AS(Get(config.Get(), L"ConfigHwnd"), AutomationError);
}

TEST_CASE("a manager that crashes ends the wait for it and fails the test" * doctest::should_fail()) {
    Manager manager;
    DWORD id = 0;
    GetWindowThreadProcessId(manager.Window(), &id);
    const ProcessHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, id));
    REQUIRE(TerminateProcess(process.Get(), static_cast<UINT>(STATUS_ACCESS_VIOLATION)));
    WaitUntil([] { return false; }, INFINITE);
    ForgetKilledServers();
}

TEST_CASE("ReleaseConfig before any ConfigInstance ends the process all the same") {
    REQUIRE(NoManagerIsLeft());
    const auto control = AnotherControl();
    CHECK(ManagerCount() == 1);
    CHECK(control->ReleaseConfig() == S_OK);
    CHECK(NoManagerIsLeft());
    LONG hidden = FormHide;
    ComPtr<IDispatch> config;
    CHECK(FAILED(control->ConfigInstance(&hidden, &config)));
}

TEST_CASE("ConfigForm hands out the window with its public members") {
    Manager manager;
    const auto form = manager.Form();
    CHECK(ToLong(Get(form.Get(), L"hWnd")) == HandleToLong(manager.Window()));
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"Calvane");
    CHECK_FALSE(ToBool(Get(form.Get(), L"Visible")));
    Call(form.Get(), L"Show");
    CHECK(Get(form.Get(), L"Visible").Value().boolVal == VARIANT_TRUE);
    Call(form.Get(), L"Hide");
    CHECK(Get(form.Get(), L"Visible").Value().boolVal == VARIANT_FALSE);
    Put(form.Get(), L"Visible", true);
    CHECK(IsWindowVisible(manager.Window()) != FALSE);
    CHECK_FALSE(ToBool(Get(form.Get(), L"b_OKtoUnload")));
    Put(form.Get(), L"b_OKtoUnload", true);
    CHECK(Get(form.Get(), L"b_OKtoUnload").Value().boolVal == VARIANT_TRUE);
    CHECK(ToText(Get(ObjectIn(Get(form.Get(), L"picShellIcon")).Get(), L"Name")) == L"picShellIcon");
    for (short index = 0; index < 3; ++index) {
        CHECK(ToText(Get(ObjectIn(Get(form.Get(), L"picTray", {index})).Get(), L"Name")) == L"picTray");
    }
    CHECK_THROWS_AS(Get(form.Get(), L"picTray", {short{3}}), AutomationError);
    CHECK_THROWS_AS(Get(form.Get(), L"picTray", {short{-1}}), AutomationError);
}

TEST_CASE("ControlHwnd finds every control by its name in any letter case, and no other") {
    Manager manager;
    const auto form = manager.Form();
    wchar_t className[32];
    REQUIRE(GetClassNameW(manager.Control(L"LVWBANNERS"), className, 32) > 0);
    CHECK(std::wstring(className) == L"SysListView32");
    CHECK_THROWS_AS(Call(form.Get(), L"ControlHwnd", {L"cmdNothing"}), AutomationError);
    CHECK_THROWS_AS(Call(form.Get(), L"ControlHwnd", {L""}), AutomationError);
}

TEST_CASE("ShellIconClass is the object that the window holds as m_oShellIcon") {
    Manager manager;
    const auto config = manager.Instance(FormHide);
    const auto icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    CHECK(Identity(icon.Get()).Get() ==
          Identity(ObjectIn(Get(manager.Form().Get(), L"m_oShellIcon")).Get()).Get());
    CHECK(ToText(Get(icon.Get(), L"ToolTip")) == L"Calvane Sentrel");
    Put(icon.Get(), L"ToolTip", L"another");
    CHECK(ToText(Get(icon.Get(), L"ToolTip")) == L"another");
}

TEST_CASE("clients can connect to ConfigClosed and never receive it") {
    Manager manager;
    const auto config = manager.Instance(formShow);
    int received = 0;
    {
        const EventConnection connection(config.Get(), __uuidof(__Config),
                                         {{1, [&](const DISPPARAMS&) { ++received; }}});
        SendMessageW(manager.Window(), WM_CLOSE, 0, 0);
        manager.Instance(formShow);
        PumpFor(200);
        manager.Control()->ReleaseConfig();
        CHECK(manager.WaitForEnd());
        PumpFor(100);
    }
    CHECK(received == 0);
}

TEST_CASE("clients cannot create Config themselves") {
    ComPtr<IUnknown> object;
    CHECK(CoCreateInstance(__uuidof(Config), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object)) ==
          REGDB_E_CLASSNOTREG);
}

TEST_CASE("calls with wrong arguments get an error and change nothing") {
    Manager manager;
    manager.Instance(FormHide);
    const auto control = AnotherControl();
    ComPtr<IDispatch> byName;
    REQUIRE(control.As(&byName) == S_OK);
    CHECK_THROWS_AS(Call(byName.Get(), L"ConfigInstance"), AutomationError);
    CHECK_THROWS_AS(Call(byName.Get(), L"ConfigInstance", {L"no number"}), AutomationError);
    CHECK_THROWS_AS(Call(byName.Get(), L"ConfigInstance", {1L, 2L}), AutomationError);
    CHECK_THROWS_AS(Call(byName.Get(), L"NoSuchMember"), AutomationError);
    CHECK_THROWS_AS(Put(manager.Form().Get(), L"b_OKtoUnload", L"no flag"), AutomationError);
    CHECK_THROWS_AS(Put(manager.Instance(FormHide).Get(), L"ConfigHwnd", 1L), AutomationError);
    CHECK(IsWindow(manager.Window()) != FALSE);
    CHECK(IsWindowVisible(manager.Window()) == FALSE);
}

TEST_CASE("a hidden loaded window keeps the manager alive without any client") {
    Manager manager;
    const HWND window = manager.Window();
    manager.LetGo();
    PumpFor(500);
    CHECK(IsWindow(window) != FALSE);
    CHECK(AnotherControl()->ReleaseConfig() == S_OK);
    CHECK(manager.WaitForEnd());
}

TEST_CASE("a client that only creates the control and lets go leaves no process behind") {
    REQUIRE(NoManagerIsLeft());
    {
        const auto control = AnotherControl();
        CHECK(ManagerCount() == 1);
    }
    CHECK(NoManagerIsLeft());
}
