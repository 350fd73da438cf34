// Senseless calls of every object in this process.
#include <doctest.h>

#include <ocidl.h>

#include "shell_notification_interface.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/client_abuse/random_calls.h"
#include "tests/entry/inside.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"

namespace {

// The objects that clients have of a hidden window.
struct Objects {
    const QuietSystem quiet;
    InsideWithoutEngine inside;
    const ComPtr<IDispatch> control = static_cast<IDispatch*>(inside.control.Get());
    const ComPtr<IDispatch> config = inside.Instance(FormHide);
    const ComPtr<IDispatch> form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    const ComPtr<IDispatch> icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    const ComPtr<IDispatch> frame = ObjectIn(Get(form.Get(), L"picTray", {1L}));
};

HRESULT Invoke(IDispatch* object, DISPID member, WORD flags, DISPPARAMS arguments) {
    Variant result;
    return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &arguments, result.Receive(), nullptr,
                          nullptr);
}

}  // namespace

TEST_CASE_FIXTURE(Objects, "senseless calls of every object leave the window as usable as before") {
    const long calls = Chance::Count("ABUSE_CALLS", 60000);
    const LONG window = g_lngConfigHwnd;
    std::vector<LONG> windows{window};
    for (const wchar_t* const name : {L"tab", L"lstExclude", L"cmdOK", L"txtSpeed"})
        windows.push_back(ToLong(Call(form.Get(), L"ControlHwnd", {name})));

    const uint32_t seed = Chance::Seed();
    Chance chance(seed);
    const DWORD start = GetTickCount();
    long succeeded = 0;
    {
        RandomCalls random(chance,
                           {{control, {0x60030000}, {0x60030001}},
                            {config, {0x68030000, 0x68030001, 0x68030002}, {}},
                            {form, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {}},
                            {icon, {1, 2, 3, 4, 5}, {}},
                            {picture, {1, 2}, {}},
                            {frame, {1, 2}, {}}},
                           windows, true);
        DWORD slowest = 0;
        for (long i = 0; i < calls; ++i) {
            CAPTURE(seed);
            CAPTURE(i);
            const DWORD before = GetTickCount();
            random.One();
            if (i % 100 == 0) PumpFor(1);
            slowest = std::max(slowest, GetTickCount() - before);
            REQUIRE(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))));
        }
        CHECK(slowest < 5000);
        for (const auto& [result, count] : random.Results()) {
            if (SUCCEEDED(result)) succeeded += count;
        }
        // Sense among the nonsense: otherwise nothing but the first check of each call was tried.
        CHECK(succeeded > calls / 20);
        CHECK(random.Results().size() > 8);
        MESSAGE("in process: " << random.Calls() << " calls from seed " << seed << ", " << succeeded
                               << " carried out, " << random.Results().size() << " different results, "
                               << GetTickCount() - start << " ms, slowest " << slowest << " ms");
    }
    // The caption and the rest are what the last caller made of them; the window itself still works.
    Put(form.Get(), L"b_OKtoUnload", false);
    CHECK(ToLong(Get(config.Get(), L"ConfigHwnd")) == window);
    Put(form.Get(), L"Caption", L"still here");
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"still here");
    Call(form.Get(), L"Show");
    CHECK(IsWindowVisible(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window))));
}

TEST_CASE_FIXTURE(
    Objects,
    "arguments for a property without any go to the object in it, and are refused where there is none") {
    constexpr DISPID kPopup = 3;
    constexpr DISPID kCaption = 7;
    constexpr DISPID kIconBox = 9;
    REQUIRE(Get(form.Get(), L"m_oPopup").Value().pdispVal == nullptr);
    const Variant one(1L);
    VARIANT values[] = {one.Value(), one.Value()};
    constexpr WORD kFlags[] = {DISPATCH_PROPERTYGET, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                               DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT};
    for (const WORD flags : kFlags) {
        for (const UINT count : {1u, 2u}) {
            CAPTURE(flags);
            CAPTURE(count);
            CHECK(Invoke(form.Get(), kPopup, flags, {values, nullptr, count, 0}) == DISP_E_NOTACOLLECTION);
            CHECK(Invoke(form.Get(), kCaption, flags, {values, nullptr, count, 0}) == DISP_E_NOTACOLLECTION);
            // The picture box is called, which has no default member.
            CHECK(Invoke(form.Get(), kIconBox, flags, {values, nullptr, count, 0}) == DISP_E_MEMBERNOTFOUND);
        }
    }
    // Where no result is wanted there is nothing to apply them to.
    DISPPARAMS arguments{values, nullptr, 1, 0};
    CHECK(form->Invoke(kPopup, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &arguments, nullptr,
                       nullptr, nullptr) == DISP_E_BADPARAMCOUNT);
}

TEST_CASE_FIXTURE(Objects, "counts of arguments without the arguments are refused by every object") {
    IDispatch* const objects[] = {control.Get(), config.Get(), form.Get(), icon.Get(), picture.Get()};
    const Variant one(1L);
    VARIANT value = one.Value();
    constexpr WORD kFlags[] = {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT};
    DISPID named[] = {DISPID_PROPERTYPUT, 0, 1};
    for (IDispatch* const object : objects) {
        for (const DISPID member : {DISPID{1}, DISPID{10}, DISPID{0x60030000}, DISPID{0x68030000}}) {
            for (const WORD flags : kFlags) {
                CAPTURE(member);
                CAPTURE(flags);
                CHECK(Invoke(object, member, flags, {nullptr, nullptr, 1, 0}) == E_INVALIDARG);
                CHECK(Invoke(object, member, flags, {&value, nullptr, 1, 1}) == E_INVALIDARG);
                CHECK(Invoke(object, member, flags, {&value, named, 1, 3}) == DISP_E_BADPARAMCOUNT);
                CHECK(Invoke(object, member, flags, {nullptr, named, 0, 1}) == DISP_E_BADPARAMCOUNT);
            }
        }
    }
}

TEST_CASE_FIXTURE(
    Objects, "an event without the arguments that it counts, or with addresses that are none, is refused") {
    constexpr DISPID kMouseUp = 1;
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnections> connections;
    REQUIRE(icon.As(&container) == S_OK);
    REQUIRE(container->FindConnectionPoint(__uuidof(__ShellNotification), &point) == S_OK);
    REQUIRE(point->EnumConnections(&connections) == S_OK);
    CONNECTDATA connection{};
    REQUIRE(connections->Next(1, &connection, nullptr) == S_OK);
    ComPtr<IDispatch> sink;
    const HRESULT found = connection.pUnk->QueryInterface(IID_PPV_ARGS(&sink));
    connection.pUnk->Release();
    REQUIRE(found == S_OK);

    CHECK(Invoke(sink.Get(), kMouseUp, DISPATCH_METHOD, {nullptr, nullptr, 4, 0}) == E_INVALIDARG);
    VARIANT values[4]{};
    values[0].vt = values[1].vt = VT_BYREF | VT_R4;
    values[2].vt = values[3].vt = VT_BYREF | VT_I2;
    CHECK(Invoke(sink.Get(), kMouseUp, DISPATCH_METHOD, {values, nullptr, 4, 0}) ==
          HresultOf(ErrorNumber::TypeMismatch));
    SHORT number = 0;
    FLOAT place = 0;
    values[0].pfltVal = values[1].pfltVal = &place;
    values[2].piVal = values[3].piVal = &number;
    CHECK(Invoke(sink.Get(), kMouseUp, DISPATCH_METHOD, {values, nullptr, 4, 0}) == S_OK);
}
