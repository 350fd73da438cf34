#include <doctest.h>

#include <windows.h>
#include <winioctl.h>

#include "platform/automation_error.h"
#include "platform/handle.h"
#include "tests/closed_log/log_page.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/import_patch.h"
#include "tests/support/plain_log.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

using Rows = std::vector<std::wstring>;

// Serves some reads and fails the next one.
int g_readsServed = 0;
DWORD g_readError = ERROR_SUCCESS;

BOOL WINAPI FailingReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED position) {
    if (g_readsServed-- > 0) {
        // A file system may deliver less than was asked for.
        const auto read = reinterpret_cast<decltype(&ReadFile)>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "ReadFile")));
        return read(file, buffer, count > 7 ? count / 2 : count, done, position);
    }
    if (done != nullptr) *done = 0;
    SetLastError(g_readError);
    return g_readError == ERROR_SUCCESS;
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

TEST_CASE_FIXTURE(LogPage, "a log that the engine holds open for appending is read") {
    folder.Write(L"closed.log", "A\r\n");
    const FileHandle engine(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    REQUIRE(engine);
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Rows{L"A"});
}

TEST_CASE_FIXTURE(LogPage, "a read-only log is read") {
    folder.Write(L"closed.log", "A\r\n");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Rows{L"A"});
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
    CHECK(RowsOf(lstClosedWnd) == Rows{L"B", L"A"});
}

TEST_CASE_FIXTURE(LogPage,
                  "a read that fails passes to the caller, and the list holds the lines read before") {
    std::string bytes;
    for (int i = 1; i <= 12; ++i)
        bytes += std::to_string(i) + std::string(9998, 'x') + "\n";
    folder.Write(L"closed.log", bytes);
    lstClosedWnd.AddItem(L"old");
    g_readError = ERROR_CRC;
    HRESULT expected = HRESULT_FROM_WIN32(ERROR_CRC);
    int rows = 0;
    SUBCASE("at once") {
        g_readsServed = 0;
    }
    SUBCASE("after the first block, which came in pieces") {
        // 32768, 16384, 8192 ... and in the end whole: 15 calls for the 65536 bytes.
        g_readsServed = 15;
        rows = 6;
    }
    SUBCASE("because another process has locked a part of it") {
        g_readsServed = 0;
        g_readError = ERROR_LOCK_VIOLATION;
        expected = HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION);
    }
    SUBCASE("because the file has become shorter") {
        g_readsServed = 0;
        g_readError = ERROR_SUCCESS;
        expected = HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
    }
    const ImportPatch patch("kernel32.dll", "ReadFile", &FailingReadFile);
    CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == expected);
    REQUIRE(lstClosedWnd.ListCount() == rows);
    for (int i = 0; i < rows; ++i)
        CHECK(lstClosedWnd.List(i).starts_with(std::to_wstring(12 - i) + L"x"));
}

TEST_CASE_FIXTURE(LogPage, "memory that runs out while the log is read passes to the caller as an error") {
    folder.Write(L"closed.log", "A\r\n");
    struct Fake {
        static BOOL WINAPI Read(HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) { throw std::bad_alloc(); }
    };
    const ImportPatch patch("kernel32.dll", "ReadFile", &Fake::Read);
    CHECK(ErrorOf([&] { log.ReadClosedLog(); }) == E_OUTOFMEMORY);
    CHECK(lstClosedWnd.ListCount() == 0);
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

TEST_CASE_FIXTURE(LogPage, "a log of more than four gigabytes shows its newest lines") {
    folder.Write(L"closed.log", "old\r\n");
    {
        const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD done = 0;
        // Where the file system has no sparse files this fails, and the test takes its time.
        DeviceIoControl(file.Get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
        LARGE_INTEGER size{};
        size.QuadPart = 5'000'000'000;
        REQUIRE(SetFilePointerEx(file.Get(), size, nullptr, FILE_BEGIN));
        REQUIRE(SetEndOfFile(file.Get()));
    }
    std::string lines = "\r\n";
    for (int i = 1; i <= 30; ++i)
        lines += "line " + std::to_string(i) + "\r\n";
    Append(path, lines);
    log.ReadClosedLog();
    REQUIRE(lstClosedWnd.ListCount() == 25);
    CHECK(lstClosedWnd.List(0) == L"line 30");
    CHECK(lstClosedWnd.List(24) == L"line 6");
}

TEST_CASE_FIXTURE(LogPage, "a log that grows between two readings shows the new lines at the next one") {
    CHECK(Show("A\r\nB") == Rows{L"B", L"A"});
    Append(path, "C\r\n");
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Rows{L"BC", L"A"});
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
    CHECK(RowsOf(lstClosedWnd) == Rows{L"A"});
}

TEST_CASE_FIXTURE(LogPage, "a file whose lines are one and the same is one row, however large") {
    std::string bytes;
    for (int i = 0; i < 400000; ++i)
        bytes += "http://www.example.com/popup.htm\r\n";
    CHECK(Show(bytes) == Rows{L"http://www.example.com/popup.htm"});
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
