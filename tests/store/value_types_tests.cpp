// How each value type is stored, byte by byte, and read back.
#include <doctest.h>

#include <climits>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "store/registry.h"
#include "tests/support/error_of.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_hive.h"

using namespace std::string_literals;

namespace {

constexpr wchar_t kKey[] = L"Software\\Calvane\\Types";
constexpr int kQword = 11;

struct Stored {
    // What is read of the value; "default" where that changes nothing.
    Variant Read() const {
        Variant value(L"default");
        long type = -1;
        std::wstring keyClass;
        const bool isRead = Registry().Read(HKEY_CURRENT_USER, kKey, L"Value", value, type, keyClass);
        CHECK(isRead);
        DWORD stored = 0;
        hive.Bytes(kKey, L"Value", &stored);
        CHECK(type == static_cast<long>(stored));
        return value;
    }
    bool Save(const Variant& value, long type) const {
        return Registry().Save(HKEY_CURRENT_USER, kKey, L"", L"Value", value, type);
    }

    const TestHive hive{HKEY_CURRENT_USER};
};

}  // namespace

TEST_CASE_FIXTURE(Stored, "each value type stores its own bytes and reads back as its own kind") {
    struct Row {
        std::string what;
        long type;
        Variant value;
        std::string stored;
        VARTYPE readKind;
        std::wstring readText;
    };
    // What the code page lacks becomes its default character.
    const std::wstring foreign = L"caf\x00e9 \x20ac \x0416 \x4e2d \xd83d\xde00";
    const std::wstring ofCodePage = FromAnsi(ToAnsi(foreign));
    const std::string longText(65536, 'y');
    const Row rows[] = {
        {"the text \"abc\", which takes exactly three bytes", REG_SZ, L"abc", "abc", VT_BSTR, L"abc"},
        {"text up to its first NUL", REG_SZ, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"text that begins with a NUL", REG_SZ, L"\0cd"s, "\0cd"s, VT_BSTR, L""},
        {"text that ends with a NUL", REG_SZ, L"ab\0"s, "ab\0"s, VT_BSTR, L"ab"},
        {"True as text", REG_SZ, true, "True", VT_BSTR, L"True"},
        {"a number as text", REG_SZ, 5000L, "5000", VT_BSTR, L"5000"},
        {"expandable text", REG_EXPAND_SZ, L"%windir%\0d"s, "%windir%\0d"s, VT_BSTR, L"%windir%"},
        {"binary", REG_BINARY, L"a\0b\0\0"s, "a\0b\0\0"s, VT_BSTR, L"a\0b\0\0"s},
        {"a number", REG_DWORD, 0x04030201L, "\x01\x02\x03\x04", VT_I4, L"67305985"},
        {"a negative number", REG_DWORD, -2L, "\xfe\xff\xff\xff", VT_I4, L"-2"},
        {"the greatest number", REG_DWORD, 2147483647L, "\xff\xff\xff\x7f", VT_I4, L"2147483647"},
        {"the smallest", REG_DWORD, LONG_MIN, "\0\0\0\x80"s, VT_I4, L"-2147483648"},
        {"a number of its text, rounded to even", REG_DWORD, L"2.5", "\x02\0\0\0"s, VT_I4, L"2"},
        {"True as a number", REG_DWORD, true, "\xff\xff\xff\xff", VT_I4, L"-1"},
        {"a number, highest first", REG_DWORD_BIG_ENDIAN, 67305985L, "\x04\x03\x02\x01", VT_I4, L"67305985"},
        {"the smallest so", REG_DWORD_BIG_ENDIAN, LONG_MIN, "\x80\0\0\0"s, VT_I4, L"-2147483648"},
        {"lines of text", REG_MULTI_SZ, L"one\0two\0\0"s, "one\0two\0\0"s, VT_BSTR, L"one\0two\0\0"s},
        {"lines of text without an end", REG_MULTI_SZ, L"one"s, "one", VT_BSTR, L"one"},
        {"an empty text, which changes nothing", REG_SZ, L"", "", VT_BSTR, L"default"},
        {"an empty binary", REG_BINARY, L"", "", VT_BSTR, L"default"},
        {"text of other code pages", REG_SZ, foreign, ToAnsi(foreign), VT_BSTR, ofCodePage},
        {"a long text", REG_SZ, FromAnsi(longText), longText, VT_BSTR, FromAnsi(longText)},
        {"a long binary", REG_BINARY, FromAnsi(longText), longText, VT_BSTR, FromAnsi(longText)},
        {"no type", REG_NONE, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"a link", REG_LINK, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"eight bytes", kQword, L"ab\0cdefg"s, "ab\0cdefg"s, VT_BSTR, L"ab"},
        {"a type of one's own", 1000, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        REQUIRE(Save(row.value, row.type));
        DWORD storedType = 0;
        CHECK(hive.Bytes(kKey, L"Value", &storedType) == row.stored);
        CHECK(storedType == static_cast<DWORD>(row.type));
        const Variant read = Read();
        CHECK(read.Value().vt == row.readKind);
        CHECK(ToText(read) == row.readText);
    }
}

TEST_CASE_FIXTURE(Stored,
                  "what other programs stored is read without its terminator, numbers by their first bytes") {
    std::string allBytes;
    for (int code = 0; code < 256; ++code)
        allBytes.push_back(static_cast<char>(code));
    const std::tuple<DWORD, std::string, std::wstring> rows[] = {
        {REG_SZ, "abc\0"s, L"abc"},
        {REG_SZ, "\0"s, L""},
        {REG_DWORD, "", L"default"},
        {REG_DWORD, "\x01\0\0\x01\x07\x07"s, L"16777217"},
        {REG_DWORD_BIG_ENDIAN, "", L"default"},
        {REG_DWORD_BIG_ENDIAN, "\x01\0\0\x01\x07\x07"s, L"16777217"},
        {REG_BINARY, allBytes, FromAnsi(allBytes)},
    };
    for (const auto& [type, bytes, text] : rows) {
        CAPTURE(type);
        hive.Write(kKey, L"Value", type, bytes);
        CHECK(ToText(Read()) == text);
    }
    CPINFO codePage{};
    REQUIRE(GetCPInfo(CP_ACP, &codePage));
    if (codePage.MaxCharSize == 1) {
        REQUIRE(Save(Read(), REG_BINARY));
        CHECK(hive.Bytes(kKey, L"Value") == allBytes);
    }
}

TEST_CASE_FIXTURE(Stored, "key, value name and class pass through the code page as well") {
    const Registry registry;
    const std::wstring name = FromAnsi(ToAnsi(L"caf\x00e9"));
    const std::wstring path = kKey + (L'\\' + name);
    REQUIRE(registry.Save(HKEY_CURRENT_USER, path, name, name, L"found", REG_SZ));
    CHECK(hive.Text(path, name) == L"found");
    Variant value;
    long type = 0;
    std::wstring keyClass;
    CHECK(registry.Read(HKEY_CURRENT_USER, path, name, value, type, keyClass));
    CHECK(ToText(value) == L"found");
    CHECK(keyClass == name);
    for (const std::wstring& deleted : {name, std::wstring()})
        CHECK(registry.Delete(HKEY_CURRENT_USER, path, deleted));
    CHECK_FALSE(hive.Exists(path));
}

TEST_CASE_FIXTURE(Stored,
                  "a number type takes no other text, once the key is there, and is not read of fewer than "
                  "four bytes, error 5") {
    for (const DWORD type : {REG_DWORD, REG_DWORD_BIG_ENDIAN}) {
        CAPTURE(type);
        hive.DeleteTree(kKey);
        for (const auto& [text, error] : {std::pair(L"abc", ErrorNumber::TypeMismatch),
                                          {L"", ErrorNumber::TypeMismatch},
                                          {L"2147483648", ErrorNumber::Overflow}}) {
            CHECK(ErrorOf([&, value = text] { Save(value, static_cast<long>(type)); }) == HresultOf(error));
            CHECK(hive.Exists(kKey));
            CHECK_FALSE(hive.Exists(kKey, L"Value"));
        }
        for (const std::string& bytes : {"\x01"s, "\x01\x02\x03"s}) {
            hive.Write(kKey, L"Value", type, bytes);
            CHECK(ErrorOf([this] { Read(); }) == HresultOf(ErrorNumber::InvalidProcedureCall));
        }
    }
}

TEST_CASE("a number read as unsigned is itself, or lies above 2147483647") {
    const Registry registry;
    CHECK(registry.UnsignedLong(0) == 0.0);
    CHECK(registry.UnsignedLong(LONG_MAX) == 2147483647.0);
    CHECK(registry.UnsignedLong(LONG_MIN) == 2147483648.0);
    CHECK(registry.UnsignedLong(-1) == 4294967295.0);
}
