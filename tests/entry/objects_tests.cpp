// What the objects tell clients, what ConfigInstance does for them, and how long they keep the process.
#include <doctest.h>

#include <climits>
#include <string>

#include "lists/resource.h"
#include "tests/entry/window_inside.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

constexpr HRESULT kOverflow = static_cast<HRESULT>(0x800A0006);
constexpr int kAboutTab = 5;

TYPEATTR AttributesOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    REQUIRE(info->GetTypeAttr(&attributes) == S_OK);
    const TYPEATTR copy = *attributes;
    info->ReleaseTypeAttr(attributes);
    return copy;
}

}  // namespace

TEST_CASE_FIXTURE(
    InsideWithoutEngine,
    "every object describes its one interface, and Config its class, whose name a script asks for") {
    const auto config = Instance(FormHide);
    ComPtr<ITypeInfo> info;
    for (IDispatch* const object :
         {config.Get(), static_cast<IDispatch*>(control.Get()), static_cast<IDispatch*>(g_frmConfig.Get())}) {
        UINT count = 0;
        CHECK(object->GetTypeInfoCount(nullptr) == E_POINTER);
        CHECK(object->GetTypeInfoCount(&count) == S_OK);
        CHECK(count == 1);
        CHECK(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr) == E_POINTER);
        CHECK(object->GetTypeInfo(1, LOCALE_USER_DEFAULT, info.ReleaseAndGetAddressOf()) == DISP_E_BADINDEX);
        CHECK(info == nullptr);
        REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info) == S_OK);
        CHECK((AttributesOf(info.Get()).wTypeFlags & TYPEFLAG_FDUAL) != 0);
    }
    ComPtr<ISupportErrorInfo> errors;
    REQUIRE(control.As(&errors) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_ConfigControl)) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_Config)) == S_FALSE);

    ComPtr<IProvideClassInfo> provider;
    REQUIRE(config.As(&provider) == S_OK);
    CHECK(provider->GetClassInfo(nullptr) == E_POINTER);
    REQUIRE(provider->GetClassInfo(info.ReleaseAndGetAddressOf()) == S_OK);
    CHECK(AttributesOf(info.Get()).typekind == TKIND_COCLASS);
    CHECK(IsEqualGUID(AttributesOf(info.Get()).guid, CLSID_Config));
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "Config and its form hand out the window's members by their names") {
    const auto config = Instance(FormHide);
    const auto form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    CHECK(ToLong(Get(form.Get(), L"hWnd")) == g_lngConfigHwnd);
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"Calvane");
    CHECK_FALSE(ToBool(Get(form.Get(), L"Visible")));
    Put(form.Get(), L"Visible", true);
    CHECK(Get(form.Get(), L"Visible").Value().boolVal == VARIANT_TRUE);
    CHECK(IsWindowVisible(Window()));
    CHECK_FALSE(ToBool(Get(form.Get(), L"b_OKtoUnload")));
    Put(form.Get(), L"b_OKtoUnload", true);
    CHECK(Get(form.Get(), L"b_OKtoUnload").Value().boolVal == VARIANT_TRUE);
    const auto icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    CHECK(icon.Get() == ObjectIn(Get(form.Get(), L"m_oShellIcon")).Get());
    CHECK(ToText(Get(ObjectIn(Get(form.Get(), L"picShellIcon")).Get(), L"Name")) == L"picShellIcon");
    for (short index = -1; index <= 3; ++index) {
        CAPTURE(index);
        const bool isThere = 0 <= index && index < 3;
        std::wstring name;
        const HRESULT result = ErrorOf(
            [&] { name = ToText(Get(ObjectIn(Get(form.Get(), L"picTray", {index})).Get(), L"Name")); });
        CHECK(result == (isThere ? S_OK : HresultOf(ErrorNumber::SubscriptOutOfRange)));
        CHECK(name == (isThere ? L"picTray" : L""));
    }
    CHECK(ToLong(Call(form.Get(), L"ControlHwnd", {L"LVWBANNERS"})) ==
          HandleToLong(ControlOf(IDC_LVWBANNERS)));
    for (const wchar_t* const name : {L"cmdNothing", L""})
        CHECK(ErrorOf([&] { Call(form.Get(), L"ControlHwnd", {name}); }) ==
              HresultOf(ErrorNumber::InvalidProcedureCall));
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "calls with wrong arguments get an error and change nothing") {
    const auto config = Instance(FormHide);
    const auto form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    CHECK_THROWS_AS(Call(control.Get(), L"ConfigInstance"), AutomationError);
    CHECK_THROWS_AS(Call(control.Get(), L"ConfigInstance", {L"no number"}), AutomationError);
    CHECK_THROWS_AS(Call(control.Get(), L"ConfigInstance", {1L, 2L}), AutomationError);
    CHECK_THROWS_AS(Call(control.Get(), L"NoSuchMember"), AutomationError);
    CHECK_THROWS_AS(Put(form.Get(), L"b_OKtoUnload", L"no flag"), AutomationError);
    CHECK_THROWS_AS(Put(config.Get(), L"ConfigHwnd", 1L), AutomationError);
    CHECK_FALSE(IsShown());
    CHECK(g_lngClientCount == 1);
}

TEST_CASE("the window, each client's control and each client's reference lock the process") {
    const ULONG before = Locks();
    {
        InsideWithoutEngine inside;
        CHECK(Locks() == before + 1);
        ComPtr<IDispatch> config = inside.Instance(FormHide);
        const ULONG held = Locks();
        config.Reset();
        const ULONG loaded = Locks();
        CHECK(loaded < held);
        g_frmConfig->Unload();
        CHECK(Locks() < loaded);
        CHECK(Locks() == before + 1);
    }
    CHECK(Locks() == before);
}

TEST_CASE("show type 1 shows the window as it is, 3 on its About page; others neither show nor hide") {
    for (const long showType : {2L, 0L, 4L, -1L, LONG_MIN, LONG_MAX}) {
        CAPTURE(showType);
        InsideWithoutEngine inside;
        inside.Instance(showType);
        CHECK_FALSE(IsShown());
        inside.Instance(formShow);
        CHECK(IsShown());
        CHECK(SelectedTab() == 0);
        inside.Instance(showType);
        CHECK(IsShown());
        g_frmConfig->Hide();
        inside.Instance(kShowAbout);
        CHECK(IsShown());
        CHECK(SelectedTab() == kAboutTab);
        g_frmConfig->Hide();
        inside.Instance(formShow);
        CHECK(SelectedTab() == kAboutTab);
        CHECK(g_lngClientCount == 5);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "the show type is never written, and each client gets the same Config") {
    const auto first = Instance(FormHide);
    const HWND window = Window();
    for (const long before : {1L, 2L, 3L, 77L}) {
        long showType = before;
        ComPtr<IDispatch> config;
        CHECK(MakeObject<ConfigControl>()->ConfigInstance(&showType, &config) == S_OK);
        CHECK(showType == before);
        CHECK(config.Get() == first.Get());
        CHECK(Window() == window);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a count that is full lets ConfigInstance show the window and then fail with overflow") {
    Instance(FormHide);
    const HWND window = Window();
    for (const long showType : {2L, 1L}) {
        g_lngClientCount = LONG_MAX;
        ComPtr<IDispatch> config;
        CHECK(Instance(showType, config) == kOverflow);
        CHECK(config == nullptr);
        CHECK(g_lngClientCount == LONG_MAX);
        CHECK(Window() == window);
        CHECK(IsShown() == (showType == formShow));
    }
    g_lngClientCount = LONG_MAX - 1;
    Instance(FormHide);
    CHECK(g_lngClientCount == LONG_MAX);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a count that cannot fall lets ReleaseConfig fail with overflow, and the manager goes on") {
    Instance(FormHide);
    g_lngClientCount = LONG_MIN;
    {
        const NotedEnd end;
        CHECK(control->ReleaseConfig() == kOverflow);
        PumpFor(50);
        CHECK(NotedEnd::Count() == 0);
    }
    CHECK(g_lngClientCount == LONG_MIN);
    CHECK(IsWindow(Window()));
    Instance(FormHide);
    CHECK(g_lngClientCount == LONG_MIN + 1);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a call without a place for its argument or its result fails and changes nothing") {
    long showType = formShow;
    ComPtr<IDispatch> config;
    CHECK(control->ConfigInstance(nullptr, &config) == E_POINTER);
    CHECK(control->ConfigInstance(&showType, nullptr) == E_POINTER);
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);

    Instance(FormHide);
    CHECK(g_oConfig->get_ConfigHwnd(nullptr) == E_POINTER);
    CHECK(g_oConfig->get_ConfigForm(nullptr) == E_POINTER);
    CHECK(g_oConfig->get_ShellIconClass(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_b_OKtoUnload(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_m_oShellIcon(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_m_oPopup(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_Visible(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_Caption(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_hWnd(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_picShellIcon(nullptr) == E_POINTER);
    CHECK(g_frmConfig->get_picTray(0, nullptr) == E_POINTER);
    CHECK(g_frmConfig->ControlHwnd(nullptr, nullptr) == E_POINTER);
    LONG handle = 1;
    CHECK(g_frmConfig->ControlHwnd(nullptr, &handle) == HresultOf(ErrorNumber::InvalidProcedureCall));
    CHECK(handle == 0);
}
