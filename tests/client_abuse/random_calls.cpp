#include "tests/client_abuse/random_calls.h"

#include <algorithm>
#include <string>

namespace {

constexpr ULONG kHugeNear = 1 << 20;  // elements
constexpr ULONG kHugeFar = 1 << 16;

SAFEARRAY* ArrayOf(VARTYPE type, LONG lower, ULONG count) {
    SAFEARRAYBOUND bound{count, lower};
    return SafeArrayCreate(type, 1, &bound);
}

}  // namespace

RandomCalls::RandomCalls(Chance& chance, std::vector<Target> targets, std::vector<LONG> windows, bool isNear)
    : m_chance(chance), m_targets(std::move(targets)), m_windows(std::move(windows)), m_isNear(isNear) {
    m_array = ArrayOf(VT_DISPATCH, 0, 4);
}

RandomCalls::~RandomCalls() {
    VariantClear(&m_variant);
    SafeArrayDestroy(m_array);
}

void RandomCalls::One() {
    const Target& target = m_chance.From(m_targets);
    ++m_results[m_chance.OneIn(10) ? Ask(target) : Invoke(target)];
    ++m_calls;
}

VARIANT RandomCalls::Argument() {
    VARIANT value;
    VariantInit(&value);
    switch (m_chance.Below(18)) {
        case 0:
            break;
        case 1:
            value.vt = VT_NULL;
            break;
        case 2:
            value.vt = VT_I2;
            value.iVal = static_cast<SHORT>(m_chance.Odd());
            break;
        case 3:
        case 4:
            value.vt = VT_I4;
            value.lVal = m_chance.Odd();
            break;
        case 5:
            value.vt = VT_I4;
            value.lVal = m_chance.From(m_windows);
            break;
        case 6:
            value.vt = VT_R8;
            value.dblVal = static_cast<double>(m_chance.Odd()) * 1e30;
            break;
        case 7: {
            value.vt = VT_BSTR;
            constexpr const wchar_t* kTexts[] = {L"", L"cmdApply", L"tab", L"5", L"True", L"\x0410\xD800"};
            if (!m_chance.OneIn(4)) value.bstrVal = SysAllocString(m_chance.From(kTexts));
            break;
        }
        case 8: {
            value.vt = VT_BSTR;
            const std::wstring text(m_chance.Below(m_isNear ? 100000 : 5000), L'x');
            value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
            break;
        }
        case 9:
            value.vt = VT_BOOL;
            value.boolVal = m_chance.OneIn(2) ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case 10:
            value.vt = VT_ERROR;
            value.scode = DISP_E_PARAMNOTFOUND;
            break;
        case 11:
            value.vt = VT_DISPATCH;
            if (!m_chance.OneIn(3)) m_chance.From(m_targets).object.CopyTo(&value.pdispVal);
            break;
        case 12:
            value.vt = VT_BYREF | VT_I4;
            m_long = m_chance.Odd();
            value.plVal = &m_long;
            break;
        case 13:
            value.vt = VT_BYREF | VT_I2;
            value.piVal = &m_short;
            break;
        case 14:
            value.vt = VT_BYREF | VT_VARIANT;
            value.pvarVal = &m_variant;
            break;
        case 15:
            value.vt = VT_BYREF | VT_ARRAY | VT_DISPATCH;
            value.pparray = &m_array;
            break;
        case 16:
            value.vt = VT_ARRAY | VT_DISPATCH;
            value.parray = ArrayOf(VT_DISPATCH, m_chance.OneIn(2) ? 0 : -3, m_chance.Below(10));
            break;
        default:
            value.vt = VT_ARRAY | VT_UI1;
            value.parray = ArrayOf(VT_UI1, 0, m_chance.OneIn(5) ? (m_isNear ? kHugeNear : kHugeFar) : 3);
            break;
    }
    return value;
}

HRESULT RandomCalls::Invoke(const Target& target) {
    DISPID member = m_chance.OneIn(8) ? m_chance.Odd() : m_chance.From(target.members);
    if (std::ranges::find(target.never, member) != target.never.end()) member = target.members.front();
    constexpr WORD kFlags[] = {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT,
                               DISPATCH_METHOD | DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUTREF};
    const WORD flags =
        m_chance.OneIn(20) ? static_cast<WORD>(m_chance.Number() & 0xF) : m_chance.From(kFlags);

    std::vector<VARIANT> values;
    for (uint32_t count = m_chance.OneIn(30) ? 40 : m_chance.Below(5); count > 0; --count)
        values.push_back(Argument());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS arguments{values.data(), nullptr, static_cast<UINT>(values.size()), 0};
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0 && !values.empty() &&
        !m_chance.OneIn(5)) {
        arguments.rgdispidNamedArgs = &put;
        arguments.cNamedArgs = 1;
    }

    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception{};
    UINT badArgument = 0;
    const bool lacksPlaces = m_chance.OneIn(6);
    const IID id = m_chance.OneIn(40) ? IID_IDispatch : IID_NULL;
    const HRESULT outcome = target.object->Invoke(
        member, id, m_chance.OneIn(4) ? static_cast<LCID>(m_chance.Number()) : LOCALE_USER_DEFAULT, flags,
        m_isNear && m_chance.OneIn(50) ? nullptr : &arguments, lacksPlaces ? nullptr : &result,
        lacksPlaces && m_chance.OneIn(2) ? nullptr : &exception, lacksPlaces ? nullptr : &badArgument);
    VariantClear(&result);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    for (VARIANT& value : values)
        VariantClear(&value);
    return outcome;
}

HRESULT RandomCalls::Ask(const Target& target) {
    constexpr const wchar_t* kNames[] = {L"ConfigHwnd", L"Show", L"nonsense", L"", L"ToolTip", L"Picture"};
    switch (m_chance.Below(3)) {
        case 0: {
            LPOLESTR names[2] = {const_cast<LPOLESTR>(m_chance.From(kNames)),
                                 const_cast<LPOLESTR>(m_chance.From(kNames))};
            DISPID ids[2]{};
            return target.object->GetIDsOfNames(IID_NULL, names, 1 + m_chance.Below(2), LOCALE_USER_DEFAULT,
                                                ids);
        }
        case 1: {
            ComPtr<ITypeInfo> info;
            return target.object->GetTypeInfo(m_chance.OneIn(2) ? 0 : static_cast<UINT>(m_chance.Odd()),
                                              LOCALE_USER_DEFAULT, &info);
        }
        default: {
            GUID id{m_chance.Number(), 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
            if (m_chance.OneIn(2)) id.Data1 = m_chance.Below(0x200);
            // Whatever it is: its reference goes at once.
            void* other = nullptr;
            const HRESULT outcome = target.object->QueryInterface(id, &other);
            if (other != nullptr) static_cast<IUnknown*>(other)->Release();
            return outcome;
        }
    }
}
