// Automation values and their conversions, all done by oleaut32 in the user's locale.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <string_view>

// Owns a VARIANT. Copies are deep, as VariantCopy makes them.
class Variant {
public:
    Variant() noexcept { VariantInit(&m_value); }
    Variant(std::wstring_view text);
    Variant(const std::wstring& text) : Variant(std::wstring_view(text)) {}
    Variant(const wchar_t* text) : Variant(std::wstring_view(text)) {}
    Variant(long number) noexcept;
    Variant(short number) noexcept;
    Variant(bool flag) noexcept;
    Variant(IDispatch* object) noexcept;  // takes a reference of its own
    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(&m_value); }

    const VARIANT& Value() const noexcept { return m_value; }

    // For calls that fill a VARIANT: what was held is released first.
    VARIANT* Receive() noexcept;

    // Hands the value over to the caller, as an [out] argument wants it.
    VARIANT Detach() noexcept;

private:
    VARIANT m_value;
};

// Each throws AutomationError (13, 6) where Automation refuses the conversion. Fractions round halves to
// even.
std::wstring ToText(const VARIANT& value);
long ToLong(const VARIANT& value);
short ToShort(const VARIANT& value);
bool ToBool(const VARIANT& value);
double ToDouble(const VARIANT& value);

inline std::wstring ToText(const Variant& value) {
    return ToText(value.Value());
}
inline long ToLong(const Variant& value) {
    return ToLong(value.Value());
}
inline short ToShort(const Variant& value) {
    return ToShort(value.Value());
}
inline bool ToBool(const Variant& value) {
    return ToBool(value.Value());
}
inline double ToDouble(const Variant& value) {
    return ToDouble(value.Value());
}

// "2.5" with the user's decimal separator, "5000" for whole numbers.
std::wstring TextOf(double number);
std::wstring TextOf(long number);

// True for what Automation can read as a number in the user's locale; empty text is none.
bool IsNumeric(std::wstring_view text);
