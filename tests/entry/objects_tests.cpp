// What the objects tell clients, what ConfigInstance does for them, and how long they keep the process.
#include <doctest.h>

#include <climits>
#include <iterator>
#include <set>
#include <string>

#include "lists/resource.h"
#include "platform/com/event_connection.h"
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

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "every object describes its one interface, and what it has not got is an error") {
    Instance(FormHide);
    for (const ComPtr<IDispatch>& object : Objects()) {
        UINT count = 0;
        CHECK(object->GetTypeInfoCount(nullptr) == E_POINTER);
        CHECK(object->GetTypeInfoCount(&count) == S_OK);
        CHECK(count == 1);
        ComPtr<ITypeInfo> info;
        CHECK(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr) == E_POINTER);
        for (const UINT index : {1u, 0xFFFFu, 0xFFFFFFFFu})
            CHECK(object->GetTypeInfo(index, LOCALE_USER_DEFAULT, &info) == DISP_E_BADINDEX);
        CHECK(info == nullptr);
        REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info) == S_OK);
        CHECK((AttributesOf(info.Get()).wTypeFlags & TYPEFLAG_FDUAL) != 0);

        wchar_t nonsense[] = L"nonsense";
        LPOLESTR names[] = {nonsense, nonsense};
        DISPID ids[2]{};
        for (const UINT wanted : {1u, 2u})
            CHECK(FAILED(object->GetIDsOfNames(IID_NULL, names, wanted, LOCALE_USER_DEFAULT, ids)));
        // All that COM itself knows: the reference to what there is goes at once.
        for (GUID id{0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}; id.Data1 < 0x200; ++id.Data1) {
            ComPtr<IUnknown> other;
            const HRESULT result = object->QueryInterface(id, reinterpret_cast<void**>(other.GetAddressOf()));
            CHECK(result == (other != nullptr ? S_OK : E_NOINTERFACE));
        }
    }
    ComPtr<ISupportErrorInfo> errors;
    REQUIRE(control.As(&errors) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_ConfigControl)) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_Config)) == S_FALSE);

    // By its class a script asks for the name of Config.
    ComPtr<IProvideClassInfo> provider;
    ComPtr<ITypeInfo> ofClass;
    REQUIRE(g_oConfig.As(&provider) == S_OK);
    CHECK(provider->GetClassInfo(nullptr) == E_POINTER);
    REQUIRE(provider->GetClassInfo(&ofClass) == S_OK);
    CHECK(AttributesOf(ofClass.Get()).typekind == TKIND_COCLASS);
    CHECK(IsEqualGUID(AttributesOf(ofClass.Get()).guid, CLSID_Config));
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "Config and its form hand out the window's members by their names") {
    const auto config = Instance(FormHide);
    const auto form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    CHECK(ToLong(Get(form.Get(), L"hWnd")) == g_lngConfigHwnd);
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"Calvane");
    for (const wchar_t* const flag : {L"Visible", L"b_OKtoUnload"}) {
        CHECK(Get(form.Get(), flag).Value().boolVal == VARIANT_FALSE);
        Put(form.Get(), flag, true);
        CHECK(Get(form.Get(), flag).Value().boolVal == VARIANT_TRUE);
    }
    CHECK(IsWindowVisible(Window()));
    Call(form.Get(), L"Hide");
    CHECK_FALSE(IsWindowVisible(Window()));
    CHECK(ObjectIn(Get(config.Get(), L"ShellIconClass")).Get() ==
          ObjectIn(Get(form.Get(), L"m_oShellIcon")).Get());
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
    std::set<long> windows;
    const wchar_t* const names[] = {
        L"tab",           L"cmdOK",           L"cmdApply",          L"cmdCancel",
        L"fraGeneral",    L"optStartup",      L"optLoadWithKiller", L"optLoadFromMenu",
        L"fraNotice",     L"chkPlaySound",    L"cmdSoundFile",      L"cmdTestSound",
        L"chkBeep",       L"fraAdvanced",     L"lblPauseKey",       L"cboPauseKey",
        L"Label1",        L"txtSpeed",        L"udbSpeed",          L"Label4",
        L"Label3",        L"txtPause",        L"udbPause",          L"Label2",
        L"Label5",        L"lstExclude",      L"cmdAddURL",         L"cmdRemoveURL",
        L"Label6",        L"lstClosedWnd",    L"cmdRefreshLog",     L"cmdAddTo",
        L"cmdClearList",  L"Label7",          L"lvwBanners",        L"cmdAddSize",
        L"cmdRemoveSize", L"Label8",          L"lvwSearchURLs",     L"cmdAddSearch",
        L"cmdEditSearch", L"cmdRemoveSearch", L"Label11",           L"lblNavSite",
        L"imgLogo",       L"lblAbout"};
    for (const wchar_t* const name : names) {
        CAPTURE(std::wstring(name));
        windows.insert(ToLong(Call(form.Get(), L"ControlHwnd", {name})));
    }
    CHECK(windows.size() == std::size(names));
    for (const wchar_t* const name : {L"cmdNothing", L""})
        CHECK(ErrorOf([&] { Call(form.Get(), L"ControlHwnd", {name}); }) ==
              HresultOf(ErrorNumber::InvalidProcedureCall));
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "clients can connect to ConfigClosed and never receive it") {
    const auto config = Instance(formShow);
    int received = 0;
    const EventConnection connection(config.Get(), __uuidof(__Config),
                                     {{1, [&](const DISPPARAMS&) { ++received; }}});
    SendMessageW(Window(), WM_CLOSE, 0, 0);
    Instance(formShow);
    g_frmConfig->Unload();
    CHECK(received == 0);
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
        // The control, the window, the icon, to which the window listens, and the picture that it shows.
        CHECK(loaded == before + 4);
        g_frmConfig->Unload();
        CHECK(Locks() == before + 1);
    }
    CHECK(Locks() == before);
}

TEST_CASE("show type 1 shows the window as it is, 3 on its About page; others neither show nor hide") {
    for (const long showType : {2L, 0L, 4L, LONG_MIN}) {
        CAPTURE(showType);
        InsideWithoutEngine inside;
        const auto first = inside.Instance(showType);
        const HWND window = Window();
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

        // It is never written, and each client gets the same Config.
        long asked = showType;
        ComPtr<IDispatch> config;
        CHECK(MakeObject<ConfigControl>()->ConfigInstance(&asked, &config) == S_OK);
        CHECK(asked == showType);
        CHECK(config.Get() == first.Get());
        CHECK(Window() == window);
        CHECK(g_lngClientCount == 6);
    }
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a count that is full lets ConfigInstance show the window and then fail with overflow, and "
                  "one that cannot fall ReleaseConfig") {
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

    // It cannot fall below the lowest number either, and the manager goes on.
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
                  "a call with wrong arguments, or without a place for an argument or the result, fails and "
                  "changes nothing") {
    long showType = formShow;
    ComPtr<IDispatch> config;
    CHECK(control->ConfigInstance(nullptr, &config) == E_POINTER);
    CHECK(control->ConfigInstance(&showType, nullptr) == E_POINTER);
    CHECK(g_oConfig == nullptr);
    CHECK(g_frmConfig == nullptr);
    CHECK(g_lngClientCount == 0);

    Instance(FormHide);
    for (const std::vector<Variant>& arguments : {std::vector<Variant>{}, {L"no number"}, {1L, 2L}})
        CHECK_THROWS_AS(Call(control.Get(), L"ConfigInstance", arguments), AutomationError);
    CHECK_THROWS_AS(Call(control.Get(), L"NoSuchMember"), AutomationError);
    CHECK_THROWS_AS(Put(g_frmConfig.Get(), L"b_OKtoUnload", L"no flag"), AutomationError);
    CHECK_THROWS_AS(Put(static_cast<_Config*>(g_oConfig.Get()), L"ConfigHwnd", 1L), AutomationError);
    CHECK_FALSE(IsShown());
    CHECK(g_lngClientCount == 1);
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
