// Conversions between Automation values.
#include "platform/com/variant.h"

#include <doctest.h>

#include <utility>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/support/error_of.h"

using namespace std::string_literals;

namespace {

constexpr auto kTypeMismatch = static_cast<HRESULT>(0x800A000D);
constexpr auto kOverflow = static_cast<HRESULT>(0x800A0006);

// The user's separators, since conversions follow the user's locale.
std::wstring Locale(LCTYPE what) {
    wchar_t text[8] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, what, text, 8);
    return text;
}

// "1.5" as the user writes it.
std::wstring Local(std::wstring text) {
    for (size_t at = text.find(L'.'); at != std::wstring::npos; at = text.find(L'.', at + 1)) {
        text.replace(at, 1, Locale(LOCALE_SDECIMAL));
    }
    return text;
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

// Counts its references.
class Counted final : public IDispatch {
public:
    ULONG references = 1;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
};

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

TEST_CASE("what is no number raises a type mismatch, error 13") {
    for (const wchar_t* const text : {L"", L"abc", L"12abc", L"1 2", L"--1", L"True and False"}) {
        const Variant value(text);
        CHECK(ErrorOf([&] { ToLong(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToShort(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToDouble(value); }) == kTypeMismatch);
        CHECK(ErrorOf([&] { ToBool(value); }) == kTypeMismatch);
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
}

TEST_CASE("text is read as a number around blanks, with sign, separators and exponent") {
    CHECK(ToLong(Variant(L"  42 ")) == 42);
    CHECK(ToLong(Variant(L"+7")) == 7);
    CHECK(ToLong(Variant(L"1e3")) == 1000);
    CHECK(ToLong(Variant(L"1" + Locale(LOCALE_STHOUSAND) + L"000")) == 1000);
    CHECK(ToDouble(Variant(Local(L"1.25"))) == 1.25);
    CHECK(ToDouble(Variant(Local(L"-.5"))) == -0.5);
}

TEST_CASE("a Boolean is the text True or False, and text and numbers become Booleans") {
    CHECK(ToText(Variant(true)) == L"True");
    CHECK(ToText(Variant(false)) == L"False");
    CHECK(ToLong(Variant(true)) == -1);
    CHECK(ToLong(Variant(false)) == 0);
    CHECK(Variant(true).Value().boolVal == VARIANT_TRUE);

    for (const wchar_t* const text : {L"True", L"true", L"TRUE", L"-1", L"1", L"5"}) {
        CHECK(ToBool(Variant(text)));
    }
    for (const wchar_t* const text : {L"False", L"false", L"FALSE", L"0"})
        CHECK_FALSE(ToBool(Variant(text)));
    CHECK(ToBool(Variant(2L)));
    CHECK_FALSE(ToBool(Variant(0L)));
}

TEST_CASE("numbers are written with the user's decimal separator and no more digits than they need") {
    CHECK(TextOf(2.5) == Local(L"2.5"));
    CHECK(TextOf(0.001) == Local(L"0.001"));
    CHECK(TextOf(5.0) == L"5");
    CHECK(TextOf(-30.0) == L"-30");
    CHECK(TextOf(5000L) == L"5000");
    CHECK(TextOf(-1L) == L"-1");
    CHECK(TextOf(0L) == L"0");
    CHECK(ToText(Variant(5000L)) == L"5000");
    CHECK(ToText(Variant(static_cast<short>(-3))) == L"-3");
    CHECK(ToText(Real(1.5)) == Local(L"1.5"));
}

TEST_CASE("an empty value is no text, 0 and False") {
    CHECK(ToText(Variant()).empty());
    CHECK(ToText(Nothing(VT_BSTR)).empty());
    CHECK(ToLong(Variant()) == 0);
    CHECK_FALSE(ToBool(Variant()));
}

TEST_CASE("text is numeric with sign, digits, separators and exponent, and not otherwise") {
    for (const wchar_t* const text : {L"0", L"1", L"007", L"-1", L"+1", L"1.5", L".5", L"5.", L"-1.5e10",
                                      L"1e5", L"1E-5", L"1E+5", L" 5", L"5 ", L"99999999999999"}) {
        CAPTURE(ToAnsi(text));
        CHECK(IsNumeric(Local(text)));
    }
    CHECK(IsNumeric(L"12" + Locale(LOCALE_STHOUSAND) + L"345"));
    for (const wchar_t* const text : {L"", L" ", L"abc", L"12px", L"px12", L"1 2", L"--1", L"1.5.5", L"e5",
                                      L".", L"-", L"1,5e", L"0x1G", L"True", L"\x2460"}) {
        CAPTURE(ToAnsi(text));
        CHECK_FALSE(IsNumeric(Local(text)));
    }
    CHECK_FALSE(IsNumeric(L"1e400"));
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
    Counted object;
    {
        const Variant value(&object);
        CHECK(object.references == 2);
        Variant copy(value);
        CHECK(object.references == 3);
        const Variant moved(std::move(copy));
        CHECK(object.references == 3);
        Variant received(&object);
        CHECK(object.references == 4);
        received.Receive();
        CHECK(object.references == 3);
    }
    CHECK(object.references == 1);

    VARIANT detached = Variant(&object).Detach();
    CHECK(object.references == 2);
    VariantClear(&detached);
    CHECK(object.references == 1);
    CHECK(Variant(static_cast<IDispatch*>(nullptr)).Value().vt == VT_DISPATCH);
}
