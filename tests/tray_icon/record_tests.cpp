#include <doctest.h>

#include <windows.h>
#include <shellapi.h>

#include <cstddef>
#include <string>

#include "tests/tray_icon/shell_calls.h"
#include "tray/notify_icon_record.h"

namespace {

std::string TipOf(const std::wstring& toolTip) {
    const NotifyIconRecord record = MakeNotifyIconRecord(nullptr, 0, nullptr, toolTip);
    return std::string(record.szTip, sizeof(record.szTip));
}

}  // namespace

TEST_CASE("the record is the 88-byte ANSI form, every byte of it") {
    const NotifyIconRecord record = MakeNotifyIconRecord(
        reinterpret_cast<HWND>(0x00010203), 0x401, reinterpret_cast<HICON>(0x00040506), L"Calvane Sentrel");
    std::string expected(
        "\x58\0\0\0"
        "\x03\x02\x01\0"
        "\x01\0\0\0"
        "\x07\0\0\0"
        "\x01\x04\0\0"
        "\x06\x05\x04\0",
        24);
    expected += std::string("Calvane Sentrel\0", 16) + std::string(48, ' ');
    REQUIRE(expected.size() == 88);
    CHECK(std::string(reinterpret_cast<const char*>(&record), sizeof(record)) == expected);
}

TEST_CASE("the fields lie where the shell looks for them") {
    CHECK(offsetof(NotifyIconRecord, cbSize) == 0);
    CHECK(offsetof(NotifyIconRecord, hWnd) == 4);
    CHECK(offsetof(NotifyIconRecord, uID) == 8);
    CHECK(offsetof(NotifyIconRecord, uFlags) == 12);
    CHECK(offsetof(NotifyIconRecord, uCallbackMessage) == 16);
    CHECK(offsetof(NotifyIconRecord, hIcon) == 20);
    CHECK(offsetof(NotifyIconRecord, szTip) == 24);
    CHECK(offsetof(NotifyIconRecord, szTip) == offsetof(NOTIFYICONDATAA, szTip));
}

TEST_CASE("an empty tip is a terminator and 63 blanks") {
    CHECK(TipOf(L"") == std::string(1, '\0') + std::string(63, ' '));
}

TEST_CASE("a short tip is followed by its terminator and blanks") {
    CHECK(TipOf(L"Calvane Sentrel") == std::string("Calvane Sentrel\0", 16) + std::string(48, ' '));
}

TEST_CASE("a tip of 62 characters has one blank behind its terminator") {
    CHECK(TipOf(std::wstring(62, L'x')) == std::string(62, 'x') + std::string(1, '\0') + " ");
}

TEST_CASE("a tip of 63 characters is sent whole with its terminator") {
    CHECK(TipOf(std::wstring(63, L'x')) == std::string(63, 'x') + std::string(1, '\0'));
}

TEST_CASE("a tip of 64 characters loses its terminator") {
    CHECK(TipOf(std::wstring(64, L'x')) == std::string(64, 'x'));
}

TEST_CASE("a tip of 70 characters is cut at 64 and has no terminator") {
    CHECK(TipOf(std::wstring(64, L'x') + L"cut me") == std::string(64, 'x'));
}

TEST_CASE("a character that the ANSI code page lacks becomes its default character") {
    CHECK(TipOf(L"\x2603!") == std::string("?!\0", 3) + std::string(61, ' '));
}

TEST_CASE("the shell gets a copy of the record and its result is passed on") {
    ShellCalls shell;
    const NotifyIconRecord record =
        MakeNotifyIconRecord(reinterpret_cast<HWND>(0x10), 7, reinterpret_cast<HICON>(0x20), L"tip");
    CHECK(NotifyShell(NIM_ADD, record));
    shell.result = [](DWORD) { return FALSE; };
    CHECK_FALSE(NotifyShell(NIM_DELETE, record));

    REQUIRE(shell.Actions() == std::vector<DWORD>{0, 2});
    CHECK(shell.calls[0].record == std::string(reinterpret_cast<const char*>(&record), sizeof(record)));
    CHECK(shell.calls[1].record == shell.calls[0].record);
}
