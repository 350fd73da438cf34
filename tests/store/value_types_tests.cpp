// How each value type is stored, byte by byte, and read back.
#include <doctest.h>

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

struct ReadBack {
    bool isRead = false;
    Variant value{L"default"};
    long type = -1;
};

ReadBack ReadValue(const wchar_t* name) {
    ReadBack result;
    std::wstring keyClass;
    result.isRead = Registry().Read(HKEY_CURRENT_USER, kKey, name, result.value, result.type, keyClass);
    return result;
}

bool SaveValue(const wchar_t* name, const Variant& value, long type) {
    return Registry().Save(HKEY_CURRENT_USER, kKey, L"", name, value, type);
}

std::string AllBytes() {
    std::string bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    return bytes;
}

}  // namespace

TEST_CASE("each value type stores its own bytes and reads back as its own kind") {
    const TestHive hive(HKEY_CURRENT_USER);
    struct Row {
        const char* meaning;
        long type;
        Variant value;
        std::string stored;
        VARTYPE readKind;
        std::wstring readText;
    };
    const Row rows[] = {
        {"the text \"abc\", which takes exactly three bytes", REG_SZ, L"abc", "abc", VT_BSTR, L"abc"},
        {"text up to its first NUL", REG_SZ, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"text that begins with a NUL", REG_SZ, L"\0cd"s, "\0cd"s, VT_BSTR, L""},
        {"text that ends with a NUL", REG_SZ, L"ab\0"s, "ab\0"s, VT_BSTR, L"ab"},
        {"True as text", REG_SZ, true, "True", VT_BSTR, L"True"},
        {"False as text", REG_SZ, false, "False", VT_BSTR, L"False"},
        {"a number as text", REG_SZ, 5000L, "5000", VT_BSTR, L"5000"},
        {"a negative number as text", REG_SZ, -1L, "-1", VT_BSTR, L"-1"},
        {"a short number as text", REG_SZ, static_cast<short>(1), "1", VT_BSTR, L"1"},
        {"expandable text", REG_EXPAND_SZ, L"%windir%", "%windir%", VT_BSTR, L"%windir%"},
        {"expandable text up to its first NUL", REG_EXPAND_SZ, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"binary", REG_BINARY, L"a\0b\0\0"s, "a\0b\0\0"s, VT_BSTR, L"a\0b\0\0"s},
        {"a number as binary", REG_BINARY, 5000L, "5000", VT_BSTR, L"5000"},
        {"a number", REG_DWORD, 0x04030201L, "\x01\x02\x03\x04", VT_I4, L"67305985"},
        {"a negative number", REG_DWORD, -2L, "\xfe\xff\xff\xff", VT_I4, L"-2"},
        {"the smallest number", REG_DWORD, static_cast<long>(0x80000000), "\0\0\0\x80"s, VT_I4,
         L"-2147483648"},
        {"a number of its text, rounded to even", REG_DWORD, L"2.5", "\x02\0\0\0"s, VT_I4, L"2"},
        {"True as a number", REG_DWORD, true, "\xff\xff\xff\xff", VT_I4, L"-1"},
        {"a number, highest byte first", REG_DWORD_BIG_ENDIAN, 0x04030201L, "\x04\x03\x02\x01", VT_I4,
         L"67305985"},
        {"a negative number, highest first", REG_DWORD_BIG_ENDIAN, -2L, "\xff\xff\xff\xfe", VT_I4, L"-2"},
        {"lines of text", REG_MULTI_SZ, L"one\0two\0\0"s, "one\0two\0\0"s, VT_BSTR, L"one\0two\0\0"s},
        {"lines of text without an end", REG_MULTI_SZ, L"one"s, "one", VT_BSTR, L"one"},
        {"no type", REG_NONE, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"a link", REG_LINK, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
        {"eight bytes", kQword, L"ab\0cdefg"s, "ab\0cdefg"s, VT_BSTR, L"ab"},
        {"a type of one's own", 1000, L"ab\0cd"s, "ab\0cd"s, VT_BSTR, L"ab"},
    };
    for (const Row& row : rows) {
        CAPTURE(std::string(row.meaning));
        REQUIRE(SaveValue(L"Value", row.value, row.type));
        DWORD storedType = 0;
        CHECK(hive.Bytes(kKey, L"Value", &storedType) == row.stored);
        CHECK(storedType == static_cast<DWORD>(row.type));

        const ReadBack read = ReadValue(L"Value");
        CHECK(read.isRead);
        CHECK(read.type == row.type);
        CHECK(read.value.Value().vt == row.readKind);
        CHECK(ToText(read.value) == row.readText);
    }
}

TEST_CASE(
    "texts of any length pass through the code page, whatever the type; an empty one is stored as no bytes "
    "and read as what the caller held") {
    const TestHive hive(HKEY_CURRENT_USER);
    std::wstring longText;
    for (int i = 0; i < 65536; ++i)
        longText.push_back(static_cast<wchar_t>(L'!' + i % 90));
    for (const long type : {REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_MULTI_SZ, REG_NONE, kQword}) {
        // What the code page lacks becomes its default character.
        for (const std::wstring& text :
             {std::wstring(), std::wstring(L"caf\x00e9 \x20ac \x0416 \x4e2d \xd83d\xde00"), longText}) {
            CAPTURE(type);
            CAPTURE(text.size());
            REQUIRE(SaveValue(L"Value", text, type));
            CHECK(hive.Bytes(kKey, L"Value") == ToAnsi(text));
            const ReadBack read = ReadValue(L"Value");
            CHECK(read.isRead);
            CHECK(read.type == type);
            CHECK(ToText(read.value) == (text.empty() ? L"default" : FromAnsi(ToAnsi(text))));
        }
    }
}

TEST_CASE("text that another program stored with its terminator is read without it, even when it is empty") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", REG_SZ, "abc\0"s);
    CHECK(ToText(ReadValue(L"Value").value) == L"abc");
    hive.Write(kKey, L"Value", REG_SZ, "\0"s);
    CHECK(ToText(ReadValue(L"Value").value).empty());
}

TEST_CASE("binary data of every byte is read as its text in the code page and saved back unchanged") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Value", REG_BINARY, AllBytes());
    const ReadBack read = ReadValue(L"Value");
    CHECK(ToText(read.value) == FromAnsi(AllBytes()));

    CPINFO codePage{};
    REQUIRE(GetCPInfo(CP_ACP, &codePage));
    if (codePage.MaxCharSize == 1) {
        REQUIRE(SaveValue(L"Copy", read.value, REG_BINARY));
        CHECK(hive.Bytes(kKey, L"Copy") == AllBytes());
    }
}

TEST_CASE("key, value name and class pass through the code page as well") {
    const TestHive hive(HKEY_CURRENT_USER);
    const Registry registry;
    const std::wstring name = FromAnsi(ToAnsi(L"caf\x00e9"));
    const std::wstring path = std::wstring(kKey) + L"\\" + name;
    REQUIRE(registry.Save(HKEY_CURRENT_USER, path, name, name, L"found", REG_SZ));
    CHECK(hive.Text(path, name) == L"found");

    Variant value;
    long type = 0;
    std::wstring keyClass;
    CHECK(registry.Read(HKEY_CURRENT_USER, path, name, value, type, keyClass));
    CHECK(ToText(value) == L"found");
    CHECK(keyClass == name);
    CHECK(registry.Delete(HKEY_CURRENT_USER, path, name));
    CHECK_FALSE(hive.Exists(path, name));
    CHECK(registry.Delete(HKEY_CURRENT_USER, path, L""));
    CHECK_FALSE(hive.Exists(path));
}

TEST_CASE("saving what is no number under a number type raises a type mismatch, once the key is there") {
    for (const long type : {REG_DWORD, REG_DWORD_BIG_ENDIAN}) {
        CAPTURE(type);
        const TestHive hive(HKEY_CURRENT_USER);
        struct Row {
            Variant value;
            ErrorNumber error;
        };
        const Row rows[] = {
            {L"abc", ErrorNumber::TypeMismatch},
            {L"", ErrorNumber::TypeMismatch},
            {L"4294967296", ErrorNumber::Overflow},
            {L"2147483648", ErrorNumber::Overflow},
        };
        for (const Row& row : rows) {
            CHECK(ErrorOf([&] { SaveValue(L"Value", row.value, type); }) == HresultOf(row.error));
            CHECK(hive.Exists(kKey));
            CHECK_FALSE(hive.Exists(kKey, L"Value"));
        }
    }
}

TEST_CASE("reading a number type of fewer than four bytes raises error 5, of more takes the first four") {
    const TestHive hive(HKEY_CURRENT_USER);
    for (const DWORD type : {REG_DWORD, REG_DWORD_BIG_ENDIAN}) {
        CAPTURE(type);
        for (const std::string& bytes : {"\x01"s, "\x01\x02\x03"s}) {
            hive.Write(kKey, L"Value", type, bytes);
            CHECK(ErrorOf([] { ReadValue(L"Value"); }) == HresultOf(ErrorNumber::InvalidProcedureCall));
        }
        hive.Write(kKey, L"Value", type, "");
        CHECK(ToText(ReadValue(L"Value").value) == L"default");
        hive.Write(kKey, L"Value", type, "\x01\0\0\x01\x07\x07"s);
        CHECK(ReadValue(L"Value").value.Value().lVal == 0x01000001);
    }
}

TEST_CASE("text whose stored length is odd is read up to its last whole character") {
    const TestHive hive(HKEY_CURRENT_USER);
    hive.Write(kKey, L"Other", L"x");
    HKEY key = nullptr;
    REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_SET_VALUE, &key) == ERROR_SUCCESS);
    const BYTE odd[] = {'a', 0, 'b', 0, 'c'};
    for (const DWORD type : {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ}) {
        CAPTURE(type);
        // What becomes of the half character at the end is the system's affair.
        REQUIRE(RegSetValueExW(key, L"Value", 0, type, odd, sizeof(odd)) == ERROR_SUCCESS);
        const ReadBack read = ReadValue(L"Value");
        CHECK(read.isRead);
        CHECK(ToText(read.value).substr(0, 2) == L"ab");
        CHECK(ToText(read.value).size() <= 3);
    }
    RegCloseKey(key);
}
