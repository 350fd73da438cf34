// Readings of a log while the file functions fail, deliver less, or the log changes under the reader.
#include <doctest.h>

#include <windows.h>

#include "lists/newest_lines.h"
#include "platform/handle.h"
#include "tests/lists/list_pages.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_log.h"

namespace {

// Stands before the file functions of this program while a log is read, and only then.
class FileFaults {
public:
    enum Function { Create, Type, Size, Position, Read };

    // Which call of which function fails in a reading, counted from 1; 0 for none. A read without an error
    // ends without bytes.
    void Fail(int function, long call, DWORD error) {
        m_function = function;
        m_failing = call;
        m_error = error;
    }

    DWORD longestRead = MAXDWORD;
    std::function<void(long call)> beforeRead = [](long) {};

    // What a reading of the log fails with.
    HRESULT Reading(ClosedLog& log) {
        for (long& count : m_calls)
            count = 0;
        m_isArmed = true;
        const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
        m_isArmed = false;
        return result;
    }

    // In the last reading.
    long Calls(int function) const { return m_calls[function]; }

private:
    bool Fails(int called) {
        if (!m_isArmed || ++m_calls[called] != m_failing || m_function != called) return false;
        SetLastError(m_error);
        return true;
    }

    bool m_isArmed = false;
    int m_function = Read;
    long m_failing = 0;
    DWORD m_error = ERROR_SUCCESS;
    long m_calls[Read + 1]{};
    const ImportFake<"CreateFileW", decltype(&CreateFileW)> m_create{
        "kernel32.dll", [this](auto... arguments) {
            return Fails(Create) ? INVALID_HANDLE_VALUE : m_create.Original(arguments...);
        }};
    const ImportFake<"GetFileType", decltype(&GetFileType)> m_type{
        "kernel32.dll",
        [this](HANDLE file) { return Fails(Type) ? FILE_TYPE_UNKNOWN : m_type.Original(file); }};
    const ImportFake<"GetFileSizeEx", decltype(&GetFileSizeEx)> m_size{
        "kernel32.dll", [this](auto... arguments) { return !Fails(Size) && m_size.Original(arguments...); }};
    const ImportFake<"SetFilePointerEx", decltype(&SetFilePointerEx)> m_position{
        "kernel32.dll",
        [this](auto... arguments) { return !Fails(Position) && m_position.Original(arguments...); }};
    const ImportFake<"ReadFile", decltype(&ReadFile)> m_read{
        "kernel32.dll",
        [this](HANDLE file, void* buffer, DWORD count, DWORD* done, OVERLAPPED* position) -> BOOL {
            if (!m_isArmed) return m_read.Original(file, buffer, count, done, position);
            m_isArmed = false;
            beforeRead(m_calls[Read] + 1);
            m_isArmed = true;
            if (!Fails(Read))
                return m_read.Original(file, buffer, std::min(count, longestRead), done, position);
            *done = 0;
            return m_error == ERROR_SUCCESS;
        }};
};

// Four blocks of different lines.
std::string LongLog() {
    std::string bytes;
    for (int i = 1; i <= 24; ++i)
        bytes += std::to_string(i) + std::string(9998, 'x') + "\r\n";
    return bytes;
}

Texts PlainRows(const std::string& log) {
    Texts rows;
    for (const std::string& line : PlainNewestLines(log, 25))
        rows.push_back(FromAnsi(line));
    return rows;
}

}  // namespace

TEST_CASE_FIXTURE(
    LogPage,
    "a call of a file function that fails passes to the caller, and the list holds what was read before") {
    folder.Write(L"closed.log", LongLog());
    const Texts all = PlainRows(LongLog());
    FileFaults faults;
    for (const int function :
         {FileFaults::Create, FileFaults::Type, FileFaults::Size, FileFaults::Position, FileFaults::Read}) {
        // A read without an error and without bytes finds the end of a file that has become shorter.
        for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_LOCK_VIOLATION, ERROR_SUCCESS}) {
            if (error == ERROR_SUCCESS && function != FileFaults::Read) continue;
            // The calls that work on a block come once for each of the four.
            const long calls = function == FileFaults::Position || function == FileFaults::Read ? 4 : 1;
            for (long k = 1; k <= calls; ++k) {
                INFO("function " << function << " call " << k << " error " << error);
                faults.Fail(function, k, error);
                // A file of an unknown kind is no file on a disk.
                const DWORD told = function == FileFaults::Type ? ERROR_NOT_SUPPORTED
                                   : error == ERROR_SUCCESS     ? ERROR_HANDLE_EOF
                                                                : error;
                CHECK(faults.Reading(log) == HRESULT_FROM_WIN32(told));
                const Texts rows = RowsOf(lstClosedWnd);
                CHECK(rows.size() / 6 == static_cast<size_t>(k - 1));
                CHECK((std::equal(rows.begin(), rows.end(), all.begin())));
                // The file is not kept open.
                CHECK(static_cast<bool>(FileHandle(
                    CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr))));
            }
        }
    }
    faults.Fail(FileFaults::Read, 0, ERROR_SUCCESS);
    CHECK(faults.Reading(log) == S_OK);
    CHECK((RowsOf(lstClosedWnd) == all));
}

TEST_CASE_FIXTURE(
    LogPage,
    "a reading opens the log once and reads its last block, or each block once, however long it is") {
    FileFaults faults;
    std::string equal;
    while (equal.size() < 5 * kLogBlockSize)
        equal += "A\n";
    std::string distinct;
    for (int n = 0; n < 100000; ++n)
        distinct += "http://ads" + std::to_string(n) + ".example.com/popup.html\r\n";
    const std::pair<std::string, long> logs[] = {
        {"", 0}, {"A", 1}, {distinct, 1}, {equal, 5}, {equal + "A\n", 6}};
    for (const auto& [bytes, blocks] : logs) {
        CAPTURE(bytes.size());
        folder.Write(L"closed.log", bytes);
        CHECK(faults.Reading(log) == S_OK);
        for (const int function : {FileFaults::Create, FileFaults::Type, FileFaults::Size})
            CHECK(faults.Calls(function) == 1);
        for (const int function : {FileFaults::Position, FileFaults::Read})
            CHECK(faults.Calls(function) == blocks);
    }
}

TEST_CASE_FIXTURE(LogPage, "reads that deliver less than was asked for are put together") {
    FileFaults faults;
    for (const DWORD most : {1UL, 7UL, 4096UL, 65535UL}) {
        const std::string bytes = LongLog().substr(most == 1 ? 230000 : 0);
        folder.Write(L"closed.log", bytes);
        faults.longestRead = most;
        CHECK(faults.Reading(log) == S_OK);
        CHECK((RowsOf(lstClosedWnd) == PlainRows(bytes)));
    }
}

TEST_CASE_FIXTURE(LogPage,
                  "a log that grows, shrinks or is replaced between two blocks is read or given up") {
    const std::string bytes = LongLog();
    const Texts all = PlainRows(bytes);
    struct Row {
        std::string what;
        std::function<void()> change;
    };
    const Row rows[] = {
        {"grows", [&] { Append(path, "appended\r\n"); }},
        {"is emptied", [&] { folder.Write(L"closed.log", ""); }},
        {"shrinks", [&] { folder.Write(L"closed.log", bytes.substr(0, 100)); }},
        {"gets other contents", [&] { folder.Write(L"closed.log", std::string(bytes.size(), '\n')); }},
        {"is deleted and made again",
         [&] {
             DeleteFileW(path.c_str());
             folder.Write(L"closed.log", "new\r\n");
         }},
    };
    for (const long call : {1L, 2L, 4L}) {
        for (const Row& row : rows) {
            CAPTURE(row.what);
            CAPTURE(call);
            folder.Write(L"closed.log", bytes);
            FileFaults faults;
            faults.beforeRead = [&](long read) {
                if (read == call) row.change();
            };
            const HRESULT result = faults.Reading(log);
            const Texts shown = RowsOf(lstClosedWnd);
            CHECK((result == S_OK || result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)));
            CHECK(shown.size() <= 25);
            // What had been read before the change is there.
            const size_t before = std::min<size_t>(shown.size(), static_cast<size_t>(call - 1) * 6);
            CHECK((std::equal(shown.begin(), shown.begin() + static_cast<int>(before), all.begin())));
            if (&row == &rows[0]) CHECK((shown == all));
            if (&row == &rows[1]) CHECK(result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF));
        }
    }
}
