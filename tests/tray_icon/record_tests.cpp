#include <doctest.h>

#include "tests/tray_icon/shell_calls.h"
#include "tray/notify_icon_record.h"

namespace {

std::string BytesOf(const NotifyIconRecord& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
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
    CHECK(BytesOf(record) == expected);
}

TEST_CASE("a tip is an ANSI text, its terminator and blanks, cut at 64 characters") {
    const std::string terminator(1, '\0');
    struct Row {
        std::string what;
        std::wstring tip;
        std::string bytes;
    };
    const Row rows[] = {
        {"none", L"", terminator + std::string(63, ' ')},
        {"62 characters", std::wstring(62, L'x'), std::string(62, 'x') + terminator + " "},
        {"63 characters", std::wstring(63, L'x'), std::string(63, 'x') + terminator},
        {"64 characters lose the terminator", std::wstring(64, L'x'), std::string(64, 'x')},
        {"70 characters", std::wstring(64, L'x') + L"cut me", std::string(64, 'x')},
        {"one that the code page lacks", L"\x2603!", "?!" + terminator + std::string(61, ' ')},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        CHECK(BytesOf(MakeNotifyIconRecord(nullptr, 0, nullptr, row.tip)).substr(24) == row.bytes);
    }
}

TEST_CASE("a shell that looks for the end of a tip without a terminator finds it behind the record") {
    char behindRecord = 'x';
    const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> shell{
        "shell32.dll", [&](DWORD, NOTIFYICONDATAA* data) {
            behindRecord = reinterpret_cast<const char*>(data)[sizeof(NotifyIconRecord)];
            return TRUE;
        }};
    NotifyShell(NIM_ADD, MakeNotifyIconRecord(nullptr, 0, nullptr, std::wstring(64, L'x')));
    CHECK(behindRecord == '\0');
}

TEST_CASE("the shell gets a copy of the record and its result is passed on") {
    ShellCalls shell;
    const NotifyIconRecord record =
        MakeNotifyIconRecord(reinterpret_cast<HWND>(0x10), 7, reinterpret_cast<HICON>(0x20), L"tip");
    CHECK(NotifyShell(NIM_ADD, record));
    shell.result = [](DWORD) { return FALSE; };
    CHECK_FALSE(NotifyShell(NIM_DELETE, record));

    REQUIRE(shell.calls.size() == 2);
    CHECK(shell.calls[0].action == 0);
    CHECK(shell.calls[1].action == 2);
    for (const ShellCall& call : shell.calls)
        CHECK(call.record == BytesOf(record));
}
