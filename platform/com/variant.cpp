#include "platform/com/variant.h"

#include <charconv>
#include <iterator>
#include <limits>
#include <utility>

#include "platform/automation_error.h"
#include "platform/com/bstr.h"

namespace {

// The conversions start from a VARIANT of any kind, so each but that of text to text goes through
// VariantChangeTypeEx. VARIANT_ALPHABOOL spells a Boolean "True" or "False" instead of "-1" and "0".
Variant Converted(const VARIANT& value, VARTYPE type) {
    Variant result;
    ThrowIfFailed(VariantChangeTypeEx(result.Receive(), const_cast<VARIANT*>(&value), LOCALE_USER_DEFAULT,
                                      VARIANT_ALPHABOOL, type));
    return result;
}

// Not every system's conversion of text to a whole number rounds right (Wine makes 1 of ".06"); that of real
// numbers does.
Variant WholeNumber(const VARIANT& value, VARTYPE type) {
    if ((value.vt & ~VT_BYREF) != VT_BSTR) return Converted(value, type);
    return Converted(Converted(value, VT_R8).Value(), type);
}

}  // namespace

Variant::Variant(std::wstring_view text) {
    VariantInit(&m_value);
    m_value.bstrVal = NewBstr(text);
    m_value.vt = VT_BSTR;
}

Variant::Variant(long number) noexcept {
    VariantInit(&m_value);
    m_value.vt = VT_I4;
    m_value.lVal = number;
}

Variant::Variant(short number) noexcept {
    VariantInit(&m_value);
    m_value.vt = VT_I2;
    m_value.iVal = number;
}

Variant::Variant(bool flag) noexcept {
    VariantInit(&m_value);
    m_value.vt = VT_BOOL;
    m_value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(IDispatch* object) noexcept {
    VariantInit(&m_value);
    m_value.vt = VT_DISPATCH;
    m_value.pdispVal = object;
    if (object != nullptr) object->AddRef();
}

Variant::Variant(const Variant& other) {
    VariantInit(&m_value);
    ThrowIfFailed(VariantCopy(&m_value, const_cast<VARIANT*>(&other.m_value)));
}

Variant::Variant(Variant&& other) noexcept : m_value(other.Detach()) {}

Variant& Variant::operator=(Variant other) noexcept {
    std::swap(m_value, other.m_value);
    return *this;
}

VARIANT* Variant::Receive() noexcept {
    VariantClear(&m_value);
    return &m_value;
}

VARIANT Variant::Detach() noexcept {
    const VARIANT value = m_value;
    VariantInit(&m_value);
    return value;
}

std::wstring ToText(const VARIANT& value) {
    if (value.vt == VT_BSTR) return std::wstring(ViewOf(value.bstrVal));
    const Variant text = Converted(value, VT_BSTR);
    return std::wstring(ViewOf(text.Value().bstrVal));
}

long ToLong(const VARIANT& value) {
    return WholeNumber(value, VT_I4).Value().lVal;
}

short ToShort(const VARIANT& value) {
    return WholeNumber(value, VT_I2).Value().iVal;
}

bool ToBool(const VARIANT& value) {
    return Converted(value, VT_BOOL).Value().boolVal != VARIANT_FALSE;
}

double ToDouble(const VARIANT& value) {
    return Converted(value, VT_R8).Value().dblVal;
}

std::wstring TextOf(double number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_R8;
    value.dblVal = number;
    return ToText(value);
}

// The standard library's wide formatting would bring all of printf into the program.
std::wstring TextOf(long number) {
    char digits[std::numeric_limits<long>::digits10 + 2];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return {std::begin(digits), end};
}

// Memory that runs out is no verdict on the text.
bool IsNumeric(std::wstring_view text) {
    const Variant value(text);
    return ResumeNext([&] { ToDouble(value); });
}
