// Senseless calls of every object in this process.
#include <doctest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "options/resource.h"
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
};

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
std::vector<VARIANT> Arguments(const std::vector<ComPtr<IDispatch>>& objects) {
    std::vector<VARIANT> values{
        Value(VT_I2, SHORT{-1}),
        Value(VT_I2, SHORT{1}),
        Value(VT_R8, -1e30),
        Value(VT_R8, 1e39),
        Value(VT_BSTR, SysAllocString(std::wstring(100000, L'x').c_str())),
        Value(VT_BOOL, VARIANT_TRUE),
        Value(VT_ERROR, DISP_E_PARAMNOTFOUND),
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
    for (const VARTYPE empty :
         std::initializer_list<VARTYPE>{VT_EMPTY, VT_NULL, VT_BSTR, VT_BOOL, VT_DISPATCH})
        values.push_back(Value(empty, 0));
    for (const wchar_t* const text : {L"", L"cmdApply", L"tab", L"5", L"True", L"\x0410\xD800"})
        values.push_back(Value(VT_BSTR, SysAllocString(text)));
    for (const LONG number : {0L, 1L, -1L, 2L, 3L, 5L, 1025L, 0x7FFFL, -0x8000L, 0xFFFFL, LONG_MAX, LONG_MIN})
        values.push_back(Value(VT_I4, number));
    for (const HWND window : {Window(), ControlOf(IDC_TAB), ControlOf(IDC_LSTEXCLUDE), ControlOf(IDC_CMDOK),
                              ControlOf(IDC_TXTSPEED)})
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
    // Of the control, but ReleaseConfig, of Config, the form, the icon and a picture.
    constexpr std::pair<DISPID, DISPID> kMembers[] = {
        {0x60030000, 1}, {0x68030000, 3}, {1, 12}, {1, 6}, {1, 3}};
    long calls = 0;
    std::map<HRESULT, long> results;
    std::vector<VARIANT> values = Arguments(objects);
    for (size_t i = 0; i < objects.size(); ++i) {
        IDispatch* const object = objects[i].Get();
        std::vector<DISPID> members{DISPID_UNKNOWN, 0, LONG_MIN};
        for (DISPID number = 0; number < kMembers[i].second; ++number)
            members.push_back(kMembers[i].first + number);
        for (const DISPID member : members) {
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
        }
        for (const auto& [id, result] :
             {std::pair{IID_IDispatch, DISP_E_UNKNOWNINTERFACE}, std::pair{IID_NULL, E_POINTER}}) {
            CHECK(object->Invoke(kMembers[i].first, id, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr,
                                 nullptr, nullptr, nullptr) == result);
        }
    }
    for (VARIANT& value : values)
        VariantClear(&value);
    // Sense among the nonsense: otherwise nothing but the first check of each call was tried.
    CHECK(results[S_OK] > calls / 50);
    CHECK(results.size() > 8);
    MESSAGE(calls << " calls");
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
    "arguments for a property without any go to the object in it, and are refused where there is none or no "
    "result is wanted; counts of arguments without the arguments are refused by every object") {
    constexpr DISPID kPopup = 3;
    constexpr DISPID kCaption = 7;
    constexpr DISPID kIconBox = 9;
    VARIANT values[] = {Value(VT_I4, 1L), Value(VT_I4, 1L)};
    DISPID named[] = {DISPID_PROPERTYPUT, 0, 1};
    const auto invoke = [](IDispatch* object, DISPID member, WORD flags, DISPPARAMS arguments) {
        Variant result;
        return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &arguments, result.Receive(),
                              nullptr, nullptr);
    };
    REQUIRE(Get(form.Get(), L"m_oPopup").Value().pdispVal == nullptr);
    for (const WORD flags :
         std::initializer_list<WORD>{DISPATCH_PROPERTYGET, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                                     DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT}) {
        for (const UINT count : {1u, 2u}) {
            CAPTURE(flags);
            CAPTURE(count);
            CHECK(invoke(form.Get(), kPopup, flags, {values, nullptr, count, 0}) == DISP_E_NOTACOLLECTION);
            CHECK(invoke(form.Get(), kCaption, flags, {values, nullptr, count, 0}) == DISP_E_NOTACOLLECTION);
            // The picture box is called, which has no default member.
            CHECK(invoke(form.Get(), kIconBox, flags, {values, nullptr, count, 0}) == DISP_E_MEMBERNOTFOUND);
        }
    }
    DISPPARAMS arguments{values, nullptr, 1, 0};
    CHECK(form->Invoke(kPopup, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &arguments, nullptr,
                       nullptr, nullptr) == DISP_E_BADPARAMCOUNT);

    for (const ComPtr<IDispatch>& object : objects) {
        for (const WORD flags :
             std::initializer_list<WORD>{DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT}) {
            CAPTURE(flags);
            CHECK(invoke(object.Get(), 1, flags, {nullptr, nullptr, 1, 0}) == E_INVALIDARG);
            CHECK(invoke(object.Get(), 1, flags, {values, nullptr, 1, 1}) == E_INVALIDARG);
            CHECK(invoke(object.Get(), 1, flags, {values, named, 1, 3}) == DISP_E_BADPARAMCOUNT);
            CHECK(invoke(object.Get(), 1, flags, {nullptr, named, 0, 1}) == DISP_E_BADPARAMCOUNT);
        }
    }
}
