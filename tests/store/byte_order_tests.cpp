// The codec's helpers: byte orders, unsigned numbers and text up to a NUL.
#include <doctest.h>

#include "platform/automation_error.h"
#include "store/registry.h"
#include "tests/support/error_of.h"

using namespace std::string_literals;

TEST_CASE("a number becomes four bytes in either order, and is read from them, whatever follows") {
    struct Row {
        long number;
        std::string lowestFirst;
    };
    const Row rows[] = {
        {0, "\0\0\0\0"s},
        {1, "\x01\0\0\0"s},
        {256, "\0\x01\0\0"s},
        {65536, "\0\0\x01\0"s},
        {16777216, "\0\0\0\x01"s},
        {0x04030201, "\x01\x02\x03\x04"s},
        {2147483647, "\xff\xff\xff\x7f"s},
        {-1, "\xff\xff\xff\xff"s},
        {-2, "\xfe\xff\xff\xff"s},
        {static_cast<long>(0x80000000), "\0\0\0\x80"s},
        {static_cast<long>(0x80000001), "\x01\0\0\x80"s},
    };
    const Registry registry;
    for (const Row& row : rows) {
        CAPTURE(row.number);
        const std::string highestFirst(row.lowestFirst.rbegin(), row.lowestFirst.rend());
        CHECK(registry.MKLLittleEndian(row.number) == row.lowestFirst);
        CHECK(registry.MKLBigEndian(row.number) == highestFirst);
        for (const char* const rest : {"", "\x7f\xff"}) {
            CHECK(registry.CVLLittleEndian(row.lowestFirst + rest) == row.number);
            CHECK(registry.CVLBigEndian(highestFirst + rest) == row.number);
        }
    }
}

TEST_CASE("fewer than four bytes raise error 5") {
    const Registry registry;
    for (const std::string& bytes : {""s, "\x01"s, "\x01\x02"s, "\x01\x02\x03"s}) {
        CAPTURE(bytes.size());
        CHECK(ErrorOf([&] { registry.CVLLittleEndian(bytes); }) == static_cast<HRESULT>(0x800A0005));
        CHECK(ErrorOf([&] { registry.CVLBigEndian(bytes); }) == static_cast<HRESULT>(0x800A0005));
    }
}

TEST_CASE("a number read as unsigned is itself, or lies above 2147483647") {
    const Registry registry;
    CHECK(registry.UnsignedLong(0) == 0.0);
    CHECK(registry.UnsignedLong(2147483647) == 2147483647.0);
    CHECK(registry.UnsignedLong(static_cast<long>(0x80000000)) == 2147483648.0);
    CHECK(registry.UnsignedLong(-2) == 4294967294.0);
    CHECK(registry.UnsignedLong(-1) == 4294967295.0);
}

TEST_CASE("text ends at its first NUL, or not at all") {
    const Registry registry;
    struct TextRow {
        std::wstring text;
        std::wstring cut;
    };
    const TextRow rows[] = {
        {L"", L""},       {L"abc", L"abc"},      {L"abc\0"s, L"abc"}, {L"\0"s, L""},
        {L"\0abc"s, L""}, {L"ab\0cd\0"s, L"ab"}, {L"a b", L"a b"},    {L"\x20ac", L"\x20ac"},
    };
    for (const TextRow& row : rows) {
        const Variant result = registry.ASCIIZ(row.text);
        CHECK(result.Value().vt == VT_BSTR);
        CHECK(ToText(result) == row.cut);
    }
}
