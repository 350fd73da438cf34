// The file of the log, as it is opened, and what is none.
#include <doctest.h>

#include <windows.h>
#include <winioctl.h>

#include "platform/automation_error.h"
#include "platform/handle.h"
#include "tests/lists/list_pages.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/plain_log.h"

namespace {

LRESULT CALLBACK NoteDeeds(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR deeds) {
    auto& noted = *reinterpret_cast<std::vector<std::string>*>(deeds);
    if (message == WM_SETREDRAW) noted.push_back(wParam != FALSE ? "draw" : "hold");
    if (message == LB_RESETCONTENT) noted.push_back("clear");
    if (message == LB_INSERTSTRING) noted.push_back("add");
    return DefSubclassProc(hwnd, message, wParam, lParam);
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

TEST_CASE_FIXTURE(
    LogPage,
    "a log that cannot be had passes to the caller, after the list has been cleared, and what is "
    "no file is not waited for") {
    const auto reading = [this] {
        lstClosedWnd.AddItem(L"old");
        const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
        CHECK(lstClosedWnd.ListCount() == 0);
        return result;
    };
    SUBCASE("the engine does not tell the path") {
        onPathAsked = [] { throw AutomationError(HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)); };
        CHECK(reading() == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
    }
    SUBCASE("a folder") {
        path = folder.Folder();
        CHECK(reading() == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    }
    SUBCASE("a file in a folder that does not exist") {
        path = folder.Path(L"missing\\closed.log");
        CHECK(reading() == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    }
    SUBCASE("a pipe, whose end may never come") {
        path = L"\\\\.\\pipe\\Calvane closed log";
        const FileHandle pipe(
            CreateNamedPipeW(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 100, 100, 0, nullptr));
        REQUIRE(pipe);
        CHECK(reading() == HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    }
    SUBCASE("a file that somebody else has for himself") {
        folder.Write(L"closed.log", "A\r\n");
        const FileHandle lock(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        CHECK(reading() == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    }
    SUBCASE("names of none") {
        for (const std::wstring& name :
             {std::wstring(), std::wstring(40000, L'x'), folder.Path(std::wstring(300, L'x'))}) {
            path = name;
            CHECK(FAILED(reading()));
        }
    }
    SUBCASE("names of what is no file") {
        for (const wchar_t* const name :
             {L"NUL", L"CON", L"CONIN$", L"COM1", L"LPT1", L"AUX", L"\\\\.\\NUL", L"\\\\.\\PhysicalDrive0",
              L"\\\\.\\C:", L"\\\\.\\pipe\\no such pipe", L"\\\\.\\mailslot\\x", L"C:\\", L".", L"\\",
              L"\\\\?\\", L"::", L"a<b", L"*", L"http://host/log"}) {
            INFO(ToAnsi(name));
            path = name;
            reading();
        }
    }
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
    folder.Write(L"closed.log", "A\r\nB\r\n");
    const ImportFake<"GetFileSizeEx", decltype(&GetFileSizeEx)> fake{
        "kernel32.dll", [&](HANDLE file, PLARGE_INTEGER size) {
            const BOOL result = fake.Original(file, size);
            Append(path, "C\r\n");
            CHECK(MoveFileW(path.c_str(), folder.Path(L"moved.log").c_str()));
            return result;
        }};
    log.ReadClosedLog();
    // Appended after the opening, C belongs to the next reading.
    CHECK(RowsOf(lstClosedWnd) == Texts{L"B", L"A"});
}

TEST_CASE_FIXTURE(LogPage, "the list is drawn once, after the reading, also when it fails") {
    folder.Write(L"closed.log", "A\r\nB\r\n");
    std::vector<std::string> deeds;
    SetWindowSubclass(lstClosedWnd.Hwnd(), NoteDeeds, 1, reinterpret_cast<DWORD_PTR>(&deeds));
    SUBCASE("read") {
        log.ReadClosedLog();
        CHECK(deeds == std::vector<std::string>{"hold", "clear", "add", "add", "draw"});
    }
    SUBCASE("not found") {
        path = folder.Folder();
        CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
        CHECK(deeds == std::vector<std::string>{"hold", "clear", "draw"});
    }
    RemoveWindowSubclass(lstClosedWnd.Hwnd(), NoteDeeds, 1);
}

TEST_CASE_FIXTURE(
    LogPage, "a log of more than four gigabytes shows its newest lines; a line of that size is given up") {
    {
        const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD done = 0;
        // Where the file system has no sparse files this fails, and the test takes its time.
        DeviceIoControl(file.Get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &done, nullptr);
        SetFilePointerEx(file.Get(), {.QuadPart = 5'000'000'000}, nullptr, FILE_BEGIN);
        SetEndOfFile(file.Get());
    }
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
    CLSID classId{};
    REQUIRE(SUCCEEDED(CLSIDFromProgID(L"Scripting.FileSystemObject", &classId)));
    ComPtr<IDispatch> files;
    REQUIRE(SUCCEEDED(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&files))));
    for (const std::string log :
         {"", "A", "A\n", "A\r\n", "A\r\nB", "\n", "\r\n", "\r", "A\r", "A\r\r\nB\n\rC", "\n\n", "\r\n\r\n",
          "a\rb\nc", "A\x1a\nB\n", "A\r\n\nB\r", "\r\r\n\r", "\xE9\xFF\r\n\xFE"}) {
        const std::wstring path = folder.Write(L"closed.log", log);
        const ComPtr<IDispatch> stream = ObjectIn(
            Call(files.Get(), L"OpenTextFile", {Variant(path), Variant(1L), Variant(true), Variant(0L)}));
        Texts lines;
        while (!ToBool(Get(stream.Get(), L"AtEndOfStream")))
            lines.push_back(ToText(Call(stream.Get(), L"ReadLine")));
        Call(stream.Get(), L"Close");
        Texts expected;
        for (const std::string& line : PlainLines(log))
            expected.push_back(FromAnsi(line));
        CAPTURE(log);
        CHECK(lines == expected);
    }
}
