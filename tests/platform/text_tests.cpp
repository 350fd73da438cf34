// Text between UTF-16 and the code page, and the server's path.
#include "platform/executable_path.h"
#include "platform/text.h"

#include <doctest.h>

#include <windows.h>

#include "store/server_directory.h"
#include "tests/support/import_fake.h"

using namespace std::string_literals;

namespace {

struct ServerAt {
    std::wstring path;

    const ImportFake<"GetModuleFileNameW", decltype(&GetModuleFileNameW)> fake{
        "kernel32.dll", [this](HMODULE, LPWSTR buffer, DWORD size) {
            // As Windows does it: what does not fit is cut, and the result is then the whole buffer.
            const auto length = static_cast<DWORD>(path.copy(buffer, size));
            if (length < size) buffer[length] = L'\0';
            return length;
        }};
};

}  // namespace

TEST_CASE("plain text of any length passes through the code page unchanged, NULs and all") {
    std::string all;
    for (int code = 0; code < 128; ++code)
        all.push_back(static_cast<char>(code));
    for (const std::string& ansi : {""s, "\0"s, "a\0\0b\0"s, all, std::string(200000, 'x')}) {
        const std::wstring wide(ansi.begin(), ansi.end());
        CHECK(ToAnsi(wide) == ansi);
        CHECK(FromAnsi(ansi) == wide);
    }
}

TEST_CASE("a character that the code page lacks becomes its default character") {
    CPINFO codePage{};
    REQUIRE(GetCPInfo(CP_ACP, &codePage));
    BOOL isReplaced = FALSE;
    char bytes[8] = {};
    // Ogham is in no ANSI code page.
    WideCharToMultiByte(CP_ACP, 0, L"\x1681", 1, bytes, sizeof(bytes), nullptr, &isReplaced);
    REQUIRE(isReplaced);
    CHECK(ToAnsi(L"a\x1681z") == "a"s + static_cast<char>(codePage.DefaultChar[0]) + "z");
}

TEST_CASE("upper case goes character by character and keeps the length") {
    CHECK(UpperCase(L"").empty());
    CHECK(UpperCase(L"http://Example.com/a1") == L"HTTP://EXAMPLE.COM/A1");
    CHECK(UpperCase(L"\x00e9\x00e4\x0436") == L"\x00c9\x00c4\x0416");
    CHECK(UpperCase(L"stra\u00dfe") == L"STRA\u00dfE");
    CHECK(UpperCase(L"a\0b"s) == L"A\0B"s);
}

TEST_CASE("the directory has no separator at its end but in a drive's root; long paths are returned whole") {
    std::vector<std::wstring> directories{L"C:\\Program Files\\Calvane", L"C:\\Calvane", L"C:\\", L"Z:\\",
                                          L"\\\\host\\share"};
    for (const size_t length : {MAX_PATH - 1, MAX_PATH, MAX_PATH + 1, 2 * MAX_PATH, 3000})
        directories.push_back(L"C:\\" + std::wstring(length - 3 - 2, L'd'));
    for (const std::wstring& directory : directories) {
        const ServerAt server{directory + (directory.ends_with(L'\\') ? L"s" : L"\\s")};
        CAPTURE(server.path.size());
        CHECK(ExecutablePath() == server.path);
        CHECK(ServerDirectory() == directory);
    }
}
