// Conversions between Automation values.
#include "platform/com/variant.h"

#include <doctest.h>

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/com_ptr.h"
#include "tests/support/error_of.h"
#include "tests/support/shown_text.h"
#include "tests/tray_icon/fake_picture_box.h"

using namespace std::string_literals;

namespace {

constexpr auto kTypeMismatch = static_cast<HRESULT>(0x800A000D);
constexpr auto kOverflow = static_cast<HRESULT>(0x800A0006);

std::wstring Locale(LCTYPE what) {
    wchar_t text[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, what, text, 8);
    return text;
}

// "1,000.5" as the user writes it: conversions follow the user's locale.
std::wstring Local(const std::wstring& text) {
    std::wstring local;
    for (const wchar_t each : text) {
        local += each == L'.'   ? Locale(LOCALE_SDECIMAL)
                 : each == L',' ? Locale(LOCALE_STHOUSAND)
                                : std::wstring(1, each);
    }
    return local;
}

Variant Real(double number) {
    Variant value;
    VARIANT* const received = value.Receive();
    received->vt = VT_R8;
    received->dblVal = number;
    return value;
}

Variant Nothing(VARTYPE type) {
    Variant value;
    value.Receive()->vt = type;
    return value;
}

}  // namespace

TEST_CASE("halves round to the even number, from text and from real numbers") {
    struct Row {
        double number;
        const wchar_t* text;
        long rounded;
    };
    const Row rows[] = {
        {0.5, L"0.5", 0},    {1.5, L"1.5", 2},       {2.5, L"2.5", 2},      {3.5, L"3.5", 4},
        {-0.5, L"-0.5", 0},  {-1.5, L"-1.5", -2},    {-2.5, L"-2.5", -2},   {2.4, L"2.4", 2},
        {2.6, L"2.6", 3},    {2.51, L"2.51", 3},     {-2.51, L"-2.51", -3}, {5000, L"5000", 5000},
        {0, L"0", 0},        {254.5, L"254.5", 254}, {0.06, L".06", 0},     {0.007, L"0.007", 0},
        {-0.06, L"-.06", 0}, {0.06, L"0.06", 0},     {10.05, L"10.05", 10}, {0.96, L".96", 1},
    };
    for (const Row& row : rows) {
        CAPTURE(row.number);
        CHECK(ToLong(Real(row.number)) == row.rounded);
        CHECK(ToShort(Real(row.number)) == row.rounded);
        CHECK(ToLong(Variant(Local(row.text))) == row.rounded);
        CHECK(ToShort(Variant(Local(row.text))) == row.rounded);
    }
}

TEST_CASE("text is a number with sign, digits, separators and exponent, and blanks around it") {
    const std::pair<const wchar_t*, double> rows[] = {
        {L"0", 0},     {L"1", 1},       {L"007", 7},     {L"-1", -1},         {L"+1", 1},
        {L"1.5", 1.5}, {L".5", 0.5},    {L"5.", 5},      {L"-.5", -0.5},      {L"1.25", 1.25},
        {L"1e5", 1e5}, {L"1E-5", 1E-5}, {L"1E+5", 1E+5}, {L"-1.5e3", -1.5e3}, {L"99999999999", 99999999999},
        {L" 5", 5},    {L"5 ", 5},      {L"  42 ", 42},  {L"1,000", 1000},    {L"12,345", 12345},
    };
    for (const auto& [text, number] : rows) {
        CAPTURE(std::wstring(text));
        CHECK(IsNumeric(Local(text)));
        CHECK(ToDouble(Variant(Local(text))) == doctest::Approx(number));
    }
}

TEST_CASE("what is no number is not numeric and raises a type mismatch, error 13") {
    for (const wchar_t* const text : {L"", L" ", L"abc", L"12abc", L"px12", L"1 2", L"--1", L"1.5.5", L"e5",
                                      L".", L"-", L"1,5e", L"0x1G", L"\x2460", L"True and False", L"True"}) {
        CAPTURE(std::wstring(text));
        const Variant value(Local(text));
        CHECK_FALSE(IsNumeric(Local(text)));
        CHECK(ErrorOf([&] { ToLong(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToShort(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToDouble(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToBool(value); }) == (text == L"True"s ? S_OK : kTypeMismatch));
    }
    CHECK(ErrorOf([] { ToLong(Nothing(VT_ERROR)); }) == kTypeMismatch);
    CHECK(ErrorOf([] { ToText(Nothing(VT_NULL)); }) == kTypeMismatch);
    CHECK(ErrorOf([] { ToText(Nothing(VT_ERROR)); }) == kTypeMismatch);
}

TEST_CASE("a number too large for its type raises an overflow, error 6") {
    CHECK(ToLong(Variant(L"2147483647")) == 2147483647);
    CHECK(ToLong(Variant(L"-2147483648")) == static_cast<long>(0x80000000));
    for (const Variant& value :
         {Variant(L"2147483648"), Variant(L"-2147483649"), Real(2147483648.0), Real(1e300)})
        CHECK(ErrorOf([&] { ToLong(value); }) == kOverflow);
    CHECK(ToShort(Variant(L"32767")) == 32767);
    CHECK(ToShort(Variant(L"-32768")) == -32768);
    for (const Variant& value : {Variant(L"32768"), Variant(-32769L), Variant(40000L)})
        CHECK(ErrorOf([&] { ToShort(value); }) == kOverflow);
    CHECK_FALSE(IsNumeric(L"1e400"));
}

TEST_CASE("a Boolean is the text True or False, and text and numbers become Booleans") {
    CHECK(ToText(Variant(true)) == L"True");
    CHECK(ToText(Variant(false)) == L"False");
    CHECK(ToLong(Variant(true)) == -1);
    CHECK(ToLong(Variant(false)) == 0);
    CHECK(Variant(true).Value().boolVal == VARIANT_TRUE);

    for (const wchar_t* const text : {L"True", L"true", L"TRUE", L"-1", L"1", L"5"})
        CHECK(ToBool(Variant(text)));
    for (const wchar_t* const text : {L"False", L"false", L"FALSE", L"0"})
        CHECK_FALSE(ToBool(Variant(text)));
    CHECK(ToBool(Variant(2L)));
    CHECK_FALSE(ToBool(Variant(0L)));
}

TEST_CASE("numbers are written with the user's decimal separator and no more digits than they need") {
    const std::pair<double, const wchar_t*> rows[] = {
        {2.5, L"2.5"}, {1.5, L"1.5"}, {0.001, L"0.001"}, {5.0, L"5"}, {-30.0, L"-30"}};
    for (const auto& [number, text] : rows) {
        CHECK(TextOf(number) == Local(text));
        CHECK(ToText(Real(number)) == Local(text));
    }
    for (const long number : {5000L, -1L, 0L}) {
        CHECK(TextOf(number) == std::to_wstring(number));
        CHECK(ToText(Variant(number)) == std::to_wstring(number));
    }
    CHECK(ToText(Variant(static_cast<short>(-3))) == L"-3");
}

TEST_CASE("an empty value is no text, 0 and False") {
    CHECK(ToText(Variant()).empty());
    CHECK(ToText(Nothing(VT_BSTR)).empty());
    CHECK(ToLong(Variant()) == 0);
    CHECK_FALSE(ToBool(Variant()));
}

TEST_CASE("text keeps its NULs and its length") {
    const Variant value(L"a\0b\0"s);
    CHECK(value.Value().vt == VT_BSTR);
    CHECK(ToText(value) == L"a\0b\0"s);
    CHECK(ToText(Variant(L"")).empty());
    CHECK(ToText(Variant(std::wstring(65536, L'x'))).size() == 65536);
}

TEST_CASE("copies are deep, moves leave nothing behind") {
    Variant first(L"text");
    const Variant copy(first);
    CHECK(copy.Value().bstrVal != first.Value().bstrVal);
    const Variant moved(std::move(first));
    Variant assigned(5L);
    assigned = copy;
    Variant& self = assigned;
    assigned = self;
    for (const Variant* const each : {&copy, &moved, static_cast<const Variant*>(&assigned)})
        CHECK(ToText(*each) == L"text");
}

TEST_CASE("an object is referred to once by each value that holds it") {
    const auto object = MakeObject<FakePictureBox>(0);
    {
        const Variant value(object.Get());
        CHECK(object->References() == 2);
        Variant copy(value);
        CHECK(object->References() == 3);
        const Variant moved(std::move(copy));
        CHECK(object->References() == 3);
        Variant received(object.Get());
        CHECK(object->References() == 4);
        received.Receive();
        CHECK(object->References() == 3);
    }
    CHECK(object->References() == 1);

    VARIANT detached = Variant(object.Get()).Detach();
    CHECK(object->References() == 2);
    VariantClear(&detached);
    CHECK(object->References() == 1);
    CHECK(Variant(static_cast<IDispatch*>(nullptr)).Value().vt == VT_DISPATCH);
}
