// Conversions between Automation values, for a user who writes a decimal point.
#include "platform/com/variant.h"

#include <doctest.h>

#include <limits>
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

TEST_CASE(
    "text is a number with sign, digits, separators and exponent, and blanks around it; halves round to the "
    "even number, from text and from real numbers") {
    struct Row {
        std::wstring text;
        double number;
        long rounded;
    };
    const Row rows[] = {
        {L"007", 7, 7},
        {L"+1.5", 1.5, 2},
        {L"2.5", 2.5, 2},
        {L"-.5", -0.5, 0},
        {L"-2.51", -2.51, -3},
        {L".06", 0.06, 0},
        {L".96", 0.96, 1},
        {L"5.", 5, 5},
        {L"-1.5E+3", -1500, -1500},
        {L"  42 ", 42, 42},
        {L"12,345", 12345, 12345},
    };
    for (const auto& [text, number, rounded] : rows) {
        CAPTURE(text);
        CHECK(IsNumeric(text));
        CHECK(ToDouble(Variant(text)) == doctest::Approx(number));
        for (const Variant& value : {Variant(text), Real(number)}) {
            CHECK(ToLong(value) == rounded);
            CHECK(ToShort(value) == rounded);
        }
    }
}

TEST_CASE("what is no number is not numeric and raises a type mismatch, error 13") {
    for (const std::wstring text : {L"", L" ", L"abc", L"12abc", L"px12", L"1 2", L"--1", L"1.5.5", L"e5",
                                    L".", L"-", L"1,5e", L"0x1G", L"\x2460", L"True and False", L"True"}) {
        CAPTURE(text);
        const Variant value(text);
        CHECK_FALSE(IsNumeric(text));
        CHECK(ErrorOf([&] { ToLong(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToShort(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToDouble(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToBool(value); }) == (text == L"True" ? S_OK : kTypeMismatch));
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
    CHECK(ToDouble(Variant(L"99999999999")) == 99999999999.0);
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

TEST_CASE("numbers are written with no more digits than they need") {
    const std::pair<double, std::wstring> rows[] = {
        {2.5, L"2.5"}, {1.5, L"1.5"}, {0.001, L"0.001"}, {5.0, L"5"}, {-30.0, L"-30"}};
    for (const auto& [number, text] : rows) {
        CHECK(TextOf(number) == text);
        CHECK(ToText(Real(number)) == text);
    }
    for (const long number :
         {5000L, -1L, 0L, std::numeric_limits<long>::min(), std::numeric_limits<long>::max()}) {
        CHECK(TextOf(number) == std::to_wstring(number));
        CHECK(ToText(Variant(number)) == std::to_wstring(number));
    }
    CHECK(ToText(Variant(static_cast<short>(-3))) == L"-3");
}

TEST_CASE("an empty value is no text, 0 and False; text keeps its NULs and its length") {
    CHECK(ToText(Variant()).empty());
    CHECK(ToText(Nothing(VT_BSTR)).empty());
    CHECK(ToLong(Variant()) == 0);
    CHECK_FALSE(ToBool(Variant()));
    for (const std::wstring& text : {L""s, L"a\0b\0"s, std::wstring(65536, L'x')}) {
        CHECK(Variant(text).Value().vt == VT_BSTR);
        CHECK(ToText(Variant(text)) == text);
    }
}

TEST_CASE("a value holds its text and its object by itself, copies too, and a move leaves nothing behind") {
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

    const auto object = MakeObject<FakePictureBox>(0);
    {
        const Variant value(object.Get());
        CHECK(object->References() == 2);
        Variant another(value);
        CHECK(object->References() == 3);
        Variant last(std::move(another));
        CHECK(object->References() == 3);
        last.Receive();
        CHECK(object->References() == 2);
    }
    VARIANT detached = Variant(object.Get()).Detach();
    CHECK(object->References() == 2);
    VariantClear(&detached);
    CHECK(object->References() == 1);
    CHECK(Variant(static_cast<IDispatch*>(nullptr)).Value().vt == VT_DISPATCH);
}
