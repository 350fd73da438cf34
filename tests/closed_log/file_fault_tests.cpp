// Readings of a log while the file functions fail, deliver less, or the log changes under the reader.
#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <array>

#include "platform/handle.h"
#include "tests/lists/list_pages.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_log.h"

namespace {

enum Function { kCreate, kType, kSize, kPosition, kRead, kFunctions };

Texts PlainRows(const std::string& log) {
    Texts rows;
    for (const std::string& line : PlainNewestLines(log, 25))
        rows.push_back(FromAnsi(line));
    return rows;
}

// With a log of four blocks of different lines, and in front of the file functions while it is read.
struct FaultyLog : LogPage {
    FaultyLog() { folder.Write(L"closed.log", bytes); }

    // What a reading of the log fails with.
    HRESULT Reading() {
        calls = {};
        isReading = true;
        const HRESULT result = ErrorOf([&] { closedLog.ReadClosedLog(); });
        isReading = false;
        return result;
    }

    const std::string bytes = [] {
        std::string lines;
        for (int i = 1; i <= 24; ++i)
            lines += std::to_string(i) + std::string(9998, 'x') + "\r\n";
        return lines;
    }();
    const Texts all = PlainRows(bytes);

    // Which call of which function fails in a reading, counted from 1; 0 for none. A read without an error
    // ends without bytes.
    Function function = kRead;
    long failing = 0;
    DWORD error = ERROR_SUCCESS;

    DWORD longestRead = MAXDWORD;
    std::function<void(long call)> beforeRead = [](long) {};

    // Of each function, in the last reading.
    std::array<long, kFunctions> calls{};
    bool isReading = false;

    bool Fails(Function called) {
        if (!isReading || ++calls[called] != failing || called != function) return false;
        SetLastError(error);
        return true;
    }
    const ImportFake<"CreateFileW", decltype(&CreateFileW)> create{
        "kernel32.dll", [this](auto... arguments) {
            return Fails(kCreate) ? INVALID_HANDLE_VALUE : create.Original(arguments...);
        }};
    const ImportFake<"GetFileType", decltype(&GetFileType)> type{
        "kernel32.dll",
        [this](HANDLE file) { return Fails(kType) ? FILE_TYPE_UNKNOWN : type.Original(file); }};
    const ImportFake<"GetFileSizeEx", decltype(&GetFileSizeEx)> size{
        "kernel32.dll", [this](auto... arguments) { return !Fails(kSize) && size.Original(arguments...); }};
    const ImportFake<"SetFilePointerEx", decltype(&SetFilePointerEx)> position{
        "kernel32.dll",
        [this](auto... arguments) { return !Fails(kPosition) && position.Original(arguments...); }};
    const ImportFake<"ReadFile", decltype(&ReadFile)> read{
        "kernel32.dll", [this](HANDLE file, void* buffer, DWORD count, DWORD* done, OVERLAPPED* overlapped) {
            if (isReading) beforeRead(calls[kRead] + 1);
            if (!Fails(kRead))
                return read.Original(file, buffer, std::min(count, longestRead), done, overlapped);
            *done = 0;
            return BOOL{error == ERROR_SUCCESS};
        }};
};

}  // namespace

TEST_CASE_FIXTURE(
    FaultyLog,
    "a reading opens the log once and reads each block once; a call that fails passes to the caller, and the "
    "list holds what was read before") {
    constexpr std::array<long, kFunctions> kCalls{1, 1, 1, 4, 4};
    CHECK(Reading() == S_OK);
    CHECK((RowsOf(lstClosedWnd) == all));
    CHECK((calls == kCalls));
    for (const Function each : {kCreate, kType, kSize, kPosition, kRead}) {
        function = each;
        // A read without an error and without bytes finds the end of a file that has become shorter.
        for (const DWORD status : {ERROR_ACCESS_DENIED, ERROR_LOCK_VIOLATION, ERROR_SUCCESS}) {
            error = status;
            if (error == ERROR_SUCCESS && function != kRead) continue;
            for (failing = 1; failing <= kCalls[function]; ++failing) {
                INFO("function " << function << " call " << failing << " error " << error);
                // A file of an unknown kind is no file on a disk.
                const DWORD told = function == kType        ? ERROR_NOT_SUPPORTED
                                   : error == ERROR_SUCCESS ? ERROR_HANDLE_EOF
                                                            : error;
                CHECK(Reading() == HRESULT_FROM_WIN32(told));
                const Texts rows = RowsOf(lstClosedWnd);
                CHECK(rows.size() / 6 == static_cast<size_t>(failing - 1));
                CHECK((std::equal(rows.begin(), rows.end(), all.begin())));
                // The file is not kept open.
                CHECK(static_cast<bool>(FileHandle(
                    CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr))));
            }
        }
    }
}

TEST_CASE_FIXTURE(FaultyLog, "reads that deliver less than was asked for are put together") {
    for (const DWORD most : {1UL, 7UL, 4096UL, 65535UL}) {
        const std::string part = bytes.substr(most == 1 ? 230000 : 0);
        folder.Write(L"closed.log", part);
        longestRead = most;
        CHECK(Reading() == S_OK);
        CHECK((RowsOf(lstClosedWnd) == PlainRows(part)));
    }
}

TEST_CASE_FIXTURE(FaultyLog,
                  "a log that grows, shrinks or is replaced between two blocks is read or given up") {
    constexpr HRESULT kGivenUp = HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
    struct Row {
        std::string what;
        std::function<void()> change;
        std::vector<HRESULT> results;
    };
    const Row rows[] = {
        {"grows", [&] { Append(path, "appended\r\n"); }, {S_OK}},
        {"is emptied", [&] { folder.Write(L"closed.log", ""); }, {kGivenUp}},
        {"shrinks", [&] { folder.Write(L"closed.log", bytes.substr(0, 100)); }, {S_OK, kGivenUp}},
        {"gets other contents",
         [&] { folder.Write(L"closed.log", std::string(bytes.size(), '\n')); },
         {S_OK}},
        {"is deleted and made again",
         [&] {
             DeleteFileW(path.c_str());
             folder.Write(L"closed.log", "new\r\n");
         },
         {S_OK, kGivenUp}},
    };
    for (const long call : {1L, 2L, 4L}) {
        for (const Row& row : rows) {
            CAPTURE(row.what);
            CAPTURE(call);
            folder.Write(L"closed.log", bytes);
            beforeRead = [&](long number) {
                if (number == call) row.change();
            };
            const HRESULT result = Reading();
            CHECK(std::count(row.results.begin(), row.results.end(), result) == 1);
            const Texts shown = RowsOf(lstClosedWnd);
            CHECK(shown.size() <= 25);
            // What had been read before the change is there.
            const size_t before = std::min<size_t>(shown.size(), static_cast<size_t>(call - 1) * 6);
            CHECK((std::equal(shown.begin(), shown.begin() + static_cast<int>(before), all.begin())));
            if (&row == &rows[0]) CHECK((shown == all));
        }
    }
}
