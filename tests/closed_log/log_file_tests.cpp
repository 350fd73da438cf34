#include <doctest.h>

#include <windows.h>
#include <winioctl.h>

#include "platform/automation_error.h"
#include "lists/newest_lines.h"
#include "platform/handle.h"
#include "tests/closed_log/file_faults.h"
#include "tests/lists/list_pages.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/plain_log.h"

using namespace std::string_literals;

namespace {

Texts PlainRows(const std::string& log) {
    Texts rows;
    for (const std::string& line : PlainNewestLines(log, 25))
        rows.push_back(FromAnsi(line));
    return rows;
}

FileHandle OpenToWrite(const std::wstring& path, DWORD disposition) {
    return FileHandle(CreateFileW(path.c_str(), GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

void Replace(const std::wstring& path, const std::string& bytes) {
    DWORD done = 0;
    WriteFile(OpenToWrite(path, CREATE_ALWAYS).Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done,
              nullptr);
}

void SetSize(const std::wstring& path, long long bytes) {
    const FileHandle file = OpenToWrite(path, OPEN_ALWAYS);
    DWORD done = 0;
    // Where the file system has no sparse files this fails, and the test takes its time.
    DeviceIoControl(file.Get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
    LARGE_INTEGER size{};
    size.QuadPart = bytes;
    SetFilePointerEx(file.Get(), size, nullptr, FILE_BEGIN);
    SetEndOfFile(file.Get());
}

// Four blocks of different lines.
std::string LongLog() {
    std::string bytes;
    for (int i = 1; i <= 24; ++i)
        bytes += std::to_string(i) + std::string(9998, 'x') + "\r\n";
    return bytes;
}

}  // namespace

TEST_CASE_FIXTURE(LogPage, "a log that does not exist is created empty and leaves the list empty") {
    lstClosedWnd.AddItem(L"old");
    REQUIRE_FALSE(FileExists(path));
    log.ReadClosedLog();
    CHECK(lstClosedWnd.ListCount() == 0);
    CHECK(FileExists(path));
    CHECK(BytesOf(path).empty());
}

TEST_CASE_FIXTURE(LogPage,
                  "a path that is not to be had passes to the caller, after the list has been cleared") {
    lstClosedWnd.AddItem(L"old");
    onPathAsked = [] { throw AutomationError(HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)); };
    CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
    CHECK(lstClosedWnd.ListCount() == 0);
}

TEST_CASE_FIXTURE(LogPage,
                  "a log that cannot be opened passes to the caller, after the list has been cleared") {
    lstClosedWnd.AddItem(L"old");
    SUBCASE("a folder") {
        path = folder.Folder();
        CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    }
    SUBCASE("a file in a folder that does not exist") {
        path = folder.Path(L"missing\\closed.log");
        CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    }
    SUBCASE("no path at all") {
        path.clear();
        CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
    }
    SUBCASE("a pipe, whose end may never come") {
        path = L"\\\\.\\pipe\\Calvane closed log";
        const FileHandle pipe(
            CreateNamedPipeW(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 100, 100, 0, nullptr));
        REQUIRE(pipe);
        CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    }
    SUBCASE("a file that somebody else has for himself") {
        folder.Write(L"closed.log", "A\r\n");
        const FileHandle lock(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    }
    CHECK(lstClosedWnd.ListCount() == 0);
}

TEST_CASE_FIXTURE(LogPage, "a log that is read-only, or that the engine holds open for appending, is read") {
    folder.Write(L"closed.log", "A\r\n");
    {
        const FileHandle engine(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        REQUIRE(engine);
        log.ReadClosedLog();
        CHECK(RowsOf(lstClosedWnd) == Texts{L"A"});
    }
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Texts{L"A"});
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_CASE_FIXTURE(LogPage, "the engine can write, rename and delete the log while it is read") {
    static LogPage* s_page = nullptr;
    s_page = this;
    folder.Write(L"closed.log", "A\r\nB\r\n");
    struct Fake {
        static BOOL WINAPI GetSize(HANDLE file, PLARGE_INTEGER size) {
            const auto original = reinterpret_cast<decltype(&GetFileSizeEx)>(
                reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetFileSizeEx")));
            const BOOL result = original(file, size);
            Append(s_page->path, "C\r\n");
            CHECK(MoveFileW(s_page->path.c_str(), s_page->folder.Path(L"moved.log").c_str()));
            return result;
        }
    };
    const ImportPatch patch("kernel32.dll", "GetFileSizeEx", &Fake::GetSize);
    log.ReadClosedLog();
    // Appended after the opening, C belongs to the next reading.
    CHECK(RowsOf(lstClosedWnd) == Texts{L"B", L"A"});
}

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
    const std::function<void()> deeds[] = {[&] { Append(path, "appended\r\n"); }, [&] { SetSize(path, 0); },
                                           [&] { SetSize(path, 100); },
                                           [&] { Replace(path, std::string(bytes.size(), '\n')); },
                                           [&] {
                                               DeleteFileW(path.c_str());
                                               Replace(path, "new\r\n");
                                           }};
    for (const long call : {1L, 2L, 4L}) {
        for (const auto& change : deeds) {
            INFO("change " << &change - deeds << " before block " << call);
            folder.Write(L"closed.log", bytes);
            FileFaults faults;
            faults.beforeRead = [&](long read) {
                if (read == call) change();
            };
            const HRESULT result = faults.Reading(log);
            const Texts rows = RowsOf(lstClosedWnd);
            CHECK((result == S_OK || result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)));
            CHECK(rows.size() <= 25);
            // What had been read before the change is there.
            const size_t before = std::min<size_t>(rows.size(), static_cast<size_t>(call - 1) * 6);
            CHECK((std::equal(rows.begin(), rows.begin() + static_cast<int>(before), all.begin())));
            if (&change == &deeds[0]) CHECK((rows == all));
            if (&change == &deeds[1]) CHECK(result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF));
        }
    }
}

TEST_CASE_FIXTURE(LogPage, "what is no file is not waited for") {
    for (const wchar_t* const name :
         {L"NUL", L"CON", L"CONIN$", L"COM1", L"LPT1", L"AUX", L"\\\\.\\NUL", L"\\\\.\\PhysicalDrive0",
          L"\\\\.\\C:", L"\\\\.\\pipe\\no such pipe", L"\\\\.\\mailslot\\x", L"C:\\", L".", L"\\", L"\\\\?\\",
          L"::", L"a<b", L"*", L"http://host/log"}) {
        INFO(ToAnsi(name));
        path = name;
        ErrorOf([&] { log.ReadClosedLog(); });
        CHECK(lstClosedWnd.ListCount() == 0);
    }
    for (const std::wstring& name :
         {std::wstring(40000, L'x'), folder.Folder() + L"\\" + std::wstring(300, L'x')}) {
        path = name;
        CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
    }
}

TEST_CASE_FIXTURE(LogPage, "the list is drawn once, after the reading, also when it fails") {
    folder.Write(L"closed.log", "A\r\nB\r\n");
    static std::vector<UINT> s_messages;
    static std::vector<WPARAM> s_redraw;
    struct Watch {
        static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR) {
            if (message == WM_SETREDRAW) s_redraw.push_back(wParam);
            if (message == WM_SETREDRAW || message == LB_RESETCONTENT || message == LB_INSERTSTRING) {
                s_messages.push_back(message);
            }
            return DefSubclassProc(hwnd, message, wParam, lParam);
        }
    };
    s_messages.clear();
    s_redraw.clear();
    SetWindowSubclass(lstClosedWnd.Hwnd(), Watch::Procedure, 1, 0);
    SUBCASE("read") {
        log.ReadClosedLog();
        CHECK(s_messages == std::vector<UINT>{WM_SETREDRAW, LB_RESETCONTENT, LB_INSERTSTRING, LB_INSERTSTRING,
                                              WM_SETREDRAW});
    }
    SUBCASE("not found") {
        path = folder.Folder();
        CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
        CHECK(s_messages == std::vector<UINT>{WM_SETREDRAW, LB_RESETCONTENT, WM_SETREDRAW});
    }
    CHECK(s_redraw == std::vector<WPARAM>{FALSE, TRUE});
    RemoveWindowSubclass(lstClosedWnd.Hwnd(), Watch::Procedure, 1);
}

TEST_CASE_FIXTURE(
    LogPage, "a log of more than four gigabytes shows its newest lines; a line of that size is given up") {
    SetSize(path, 5'000'000'000);
    Append(path, "\r\nnewer\r\nnewest\r\n");
    CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == E_OUTOFMEMORY);
    CHECK(RowsOf(lstClosedWnd) == Texts{L"newest", L"newer"});
    std::string lines;
    for (int i = 1; i <= 30; ++i)
        lines += "line " + std::to_string(i) + "\r\n";
    Append(path, lines);
    log.ReadClosedLog();
    REQUIRE(lstClosedWnd.ListCount() == 25);
    CHECK(lstClosedWnd.List(0) == L"line 30");
    CHECK(lstClosedWnd.List(24) == L"line 6");
}

TEST_CASE_FIXTURE(LogPage, "a log at a path of 300 characters is read") {
    std::wstring deep = L"\\\\?\\" + folder.Folder();
    while (deep.size() < 300) {
        deep += L"\\folder_with_a_name_of_40_characters____";
        REQUIRE(CreateDirectoryW(deep.c_str(), nullptr));
    }
    path = deep + L"\\closed.log";
    Append(path, "A\r\n");
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Texts{L"A"});
}

// What the system's own text stream makes of a file is the measure of the plain reading that the other tests
// trust.
TEST_CASE("the plain reading splits a file as the scripting runtime does") {
    const TestFolder folder;
    const std::string logs[] = {"",
                                "A",
                                "A\n",
                                "A\r\n",
                                "A\r\nB",
                                "\n",
                                "\r\n",
                                "\r",
                                "A\r",
                                "A\r\r\nB\n\rC",
                                "\n\n",
                                "\r\n\r\n",
                                "a\rb\nc",
                                "A\x1a\nB\n",
                                "A\r\n\nB\r",
                                "\r\r\n\r",
                                "\xE9\xFF\r\n\xFE"};
    CLSID classId{};
    REQUIRE(SUCCEEDED(CLSIDFromProgID(L"Scripting.FileSystemObject", &classId)));
    ComPtr<IDispatch> files;
    REQUIRE(SUCCEEDED(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&files))));
    for (const std::string& log : logs) {
        const std::wstring path = folder.Write(L"closed.log", log);
        const ComPtr<IDispatch> stream = ObjectIn(
            Call(files.Get(), L"OpenTextFile", {Variant(path), Variant(1L), Variant(true), Variant(0L)}));
        std::vector<std::wstring> lines;
        while (!ToBool(Get(stream.Get(), L"AtEndOfStream")))
            lines.push_back(ToText(Call(stream.Get(), L"ReadLine")));
        Call(stream.Get(), L"Close");
        std::vector<std::wstring> expected;
        for (const std::string& line : PlainLines(log))
            expected.push_back(FromAnsi(line));
        CAPTURE(log);
        CHECK(lines == expected);
    }
}
