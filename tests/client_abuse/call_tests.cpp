// Senseless calls of every object in this process.
#include <doctest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "shell_notification_interface.h"
#include "tests/client_abuse/quiet_system.h"
#include "tests/entry/window_inside.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"

namespace {

// The objects that clients have of a hidden window.
struct HiddenWindow : QuietSystem, InsideWithoutEngine {
    const ComPtr<IDispatch> config = Instance(FormHide);
    const std::vector<ComPtr<IDispatch>> objects = Objects();
    const ComPtr<IDispatch> form = objects[2];
    const ComPtr<IDispatch> icon = objects[3];
};

HRESULT Invoke(IDispatch* object, DISPID member, WORD flags, DISPPARAMS arguments) {
    Variant result;
    return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &arguments, result.Receive(), nullptr,
                          nullptr);
}

template <class Content>
VARIANT Value(VARTYPE type, Content content) {
    VARIANT value{};
    value.vt = type;
    std::memcpy(&value.dblVal, &content, sizeof(content));
    return value;
}

SAFEARRAY* ArrayOf(VARTYPE type, LONG lower, ULONG count) {
    SAFEARRAYBOUND bound{count, lower};
    return SafeArrayCreate(type, 1, &bound);
}

// What arguments by reference refer to.
LONG someLong = LONG_MAX;
SHORT someShort = 0;
VARIANT someVariant{};
SAFEARRAY* someArray = ArrayOf(VT_DISPATCH, 0, 4);

// What careless callers pass: every type, numbers that are small, negative or at a limit, objects and windows
// at a wrong place. The caller clears them.
std::vector<VARIANT> Arguments(const std::vector<ComPtr<IDispatch>>& objects,
                               const std::vector<LONG>& windows) {
    std::vector<VARIANT> values{
        Value(VT_EMPTY, 0),
        Value(VT_NULL, 0),
        Value(VT_I2, SHORT{-1}),
        Value(VT_I2, SHORT{1}),
        Value(VT_R8, -1e30),
        Value(VT_R8, 1e39),
        Value(VT_BSTR, BSTR{nullptr}),
        Value(VT_BSTR, SysAllocString(std::wstring(100000, L'x').c_str())),
        Value(VT_BOOL, VARIANT_TRUE),
        Value(VT_BOOL, VARIANT_FALSE),
        Value(VT_ERROR, DISP_E_PARAMNOTFOUND),
        Value(VT_DISPATCH, static_cast<IDispatch*>(nullptr)),
        Value(VT_BYREF | VT_I4, &someLong),
        Value(VT_BYREF | VT_I2, &someShort),
        Value(VT_BYREF | VT_VARIANT, &someVariant),
        Value(VT_BYREF | VT_ARRAY | VT_DISPATCH, &someArray),
        Value(VT_ARRAY | VT_DISPATCH, ArrayOf(VT_DISPATCH, 0, 9)),
        Value(VT_ARRAY | VT_DISPATCH, ArrayOf(VT_DISPATCH, -3, 3)),
        Value(VT_ARRAY | VT_DISPATCH, ArrayOf(VT_DISPATCH, 0, 0)),
        Value(VT_ARRAY | VT_UI1, ArrayOf(VT_UI1, 0, 3)),
        Value(VT_ARRAY | VT_UI1, ArrayOf(VT_UI1, 0, 1 << 20)),
    };
    for (const wchar_t* const text : {L"", L"cmdApply", L"tab", L"5", L"True", L"\x0410\xD800"})
        values.push_back(Value(VT_BSTR, SysAllocString(text)));
    for (const LONG number : {0L, 1L, -1L, 2L, 3L, 5L, 1025L, 0x7FFFL, -0x8000L, 0xFFFFL, LONG_MAX, LONG_MIN})
        values.push_back(Value(VT_I4, number));
    for (const LONG window : windows)
        values.push_back(Value(VT_I4, window));
    for (const ComPtr<IDispatch>& object : objects)
        values.push_back(Variant(object.Get()).Detach());
    return values;
}

// isWhole: with places for what comes back, and with the name of the value that a property is set to.
HRESULT Invoke(IDispatch* object, DISPID member, WORD flags, std::span<VARIANT> values, bool isWhole) {
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS arguments{values.data(), nullptr, static_cast<UINT>(values.size()), 0};
    if (isWhole && (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0 && !values.empty()) {
        arguments.rgdispidNamedArgs = &put;
        arguments.cNamedArgs = 1;
    }
    Variant result;
    EXCEPINFO exception{};
    UINT badArgument = 0;
    const HRESULT outcome = object->Invoke(member, IID_NULL, isWhole ? LOCALE_USER_DEFAULT : 0xFFFFFFFF,
                                           flags, &arguments, isWhole ? result.Receive() : nullptr,
                                           isWhole ? &exception : nullptr, isWhole ? &badArgument : nullptr);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return outcome;
}

}  // namespace

TEST_CASE_FIXTURE(HiddenWindow,
                  "every member, called in every way and with every kind of argument, leaves the window as "
                  "usable as before") {
    const LONG window = g_lngConfigHwnd;
    std::vector<LONG> windows{window};
    for (const wchar_t* const name : {L"tab", L"lstExclude", L"cmdOK", L"txtSpeed"})
        windows.push_back(ToLong(Call(form.Get(), L"ControlHwnd", {name})));
    // Of the control, but ReleaseConfig, of Config, the form, the icon and a picture; each with some that are
    // none.
    std::vector<DISPID> members[] = {{0x60030000},
                                     {0x68030000, 0x68030001, 0x68030002},
                                     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                                     {1, 2, 3, 4, 5, 6},
                                     {1, 2, 3}};
    long calls = 0;
    std::map<HRESULT, long> results;
    const DWORD start = GetTickCount();
    std::vector<VARIANT> values = Arguments(objects, windows);
    for (size_t i = 0; i < objects.size(); ++i) {
        IDispatch* const object = objects[i].Get();
        members[i].insert(members[i].end(), {DISPID_UNKNOWN, 0, LONG_MIN});
        for (const DISPID member : members[i]) {
            for (WORD flags = 0; flags <= 0xF; ++flags) {
                CAPTURE(member);
                CAPTURE(flags);
                for (const bool isWhole : {true, false}) {
                    ++results[Invoke(object, member, flags, {}, isWhole)];
                    for (size_t first = 0; first < values.size(); ++first) {
                        for (const size_t count : {1u, 2u, 4u}) {
                            const size_t there = std::min(count, values.size() - first);
                            ++results[Invoke(object, member, flags, {&values[first], there}, isWhole)];
                            ++calls;
                        }
                    }
                    REQUIRE(IsWindow(Window()));
                }
                PumpFor(1);
            }
            Variant result;
            CHECK(object->Invoke(member, IID_IDispatch, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr,
                                 result.Receive(), nullptr, nullptr) == DISP_E_UNKNOWNINTERFACE);
            CHECK(object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr,
                                 result.Receive(), nullptr, nullptr) == E_POINTER);
        }
    }
    for (VARIANT& value : values)
        VariantClear(&value);
    // Sense among the nonsense: otherwise nothing but the first check of each call was tried.
    CHECK(results[S_OK] > calls / 50);
    CHECK(results.size() > 8);
    MESSAGE(calls << " calls, " << results[S_OK] << " carried out, " << results.size()
                  << " different results, " << GetTickCount() - start << " ms");
    // The caption and the rest are what the last caller made of them; the window itself still works.
    Put(form.Get(), L"b_OKtoUnload", false);
    CHECK(ToLong(Get(config.Get(), L"ConfigHwnd")) == window);
    Put(form.Get(), L"Caption", L"still here");
    CHECK(ToText(Get(form.Get(), L"Caption")) == L"still here");
    Call(form.Get(), L"Show");
    CHECK(IsShown());
}

TEST_CASE_FIXTURE(
    HiddenWindow,
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

TEST_CASE_FIXTURE(HiddenWindow, "counts of arguments without the arguments are refused by every object") {
    const Variant one(1L);
    VARIANT value = one.Value();
    constexpr WORD kFlags[] = {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT};
    DISPID named[] = {DISPID_PROPERTYPUT, 0, 1};
    for (const ComPtr<IDispatch>& object : objects) {
        for (const DISPID member : {DISPID{1}, DISPID{10}, DISPID{0x60030000}, DISPID{0x68030000}}) {
            for (const WORD flags : kFlags) {
                CAPTURE(member);
                CAPTURE(flags);
                CHECK(Invoke(object.Get(), member, flags, {nullptr, nullptr, 1, 0}) == E_INVALIDARG);
                CHECK(Invoke(object.Get(), member, flags, {&value, nullptr, 1, 1}) == E_INVALIDARG);
                CHECK(Invoke(object.Get(), member, flags, {&value, named, 1, 3}) == DISP_E_BADPARAMCOUNT);
                CHECK(Invoke(object.Get(), member, flags, {nullptr, named, 0, 1}) == DISP_E_BADPARAMCOUNT);
            }
        }
    }
}

TEST_CASE_FIXTURE(
    HiddenWindow,
    "an event without the arguments that it counts, or with addresses that are none, is refused") {
    constexpr DISPID kMouseUp = 1;
    const ComPtr<IDispatch> sink = ListenerTo(icon.Get(), __uuidof(__ShellNotification));
    REQUIRE(sink != nullptr);
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
