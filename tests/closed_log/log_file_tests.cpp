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

TEST_CASE_FIXTURE(LogPage, "a log that does not exist is created empty and leaves the list empty") {
    lstClosedWnd.AddItem(L"old");
    REQUIRE_FALSE(FileExists(path));
    closedLog.ReadClosedLog();
    CHECK(lstClosedWnd.ListCount() == 0);
    CHECK(FileExists(path));
    CHECK(BytesOf(path).empty());
}

TEST_CASE_FIXTURE(
    LogPage,
    "a log that cannot be had passes to the caller, after the list has been cleared, and what is "
    "no file is not waited for") {
    const auto reading = [this](const std::wstring& name) {
        path = name;
        lstClosedWnd.AddItem(L"old");
        const HRESULT result = ErrorOf([&] { closedLog.ReadClosedLog(); });
        CHECK(lstClosedWnd.ListCount() == 0);
        return result;
    };
    const std::wstring pipeName = L"\\\\.\\pipe\\Calvane closed log";
    const FileHandle pipe(
        CreateNamedPipeW(pipeName.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 100, 100, 0, nullptr));
    REQUIRE(pipe);
    folder.Write(L"closed.log", "A\r\n");
    const FileHandle lock(
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    CHECK(reading(path) == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CHECK(reading(folder.Folder()) == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    CHECK(reading(folder.Path(L"missing\\closed.log")) == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    CHECK(reading(pipeName) == HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    for (const std::wstring& none :
         {std::wstring(), std::wstring(40000, L'x'), folder.Path(std::wstring(300, L'x'))})
        CHECK(FAILED(reading(none)));
    for (const wchar_t* const device :
         {L"NUL", L"CON", L"CONIN$", L"COM1", L"LPT1", L"AUX", L"\\\\.\\NUL", L"\\\\.\\PhysicalDrive0",
          L"\\\\.\\C:", L"\\\\.\\pipe\\no such pipe", L"\\\\.\\mailslot\\x", L"C:\\", L".", L"\\", L"\\\\?\\",
          L"::", L"a<b", L"*", L"http://host/log"}) {
        INFO(ToAnsi(device));
        reading(device);
    }
    onPathAsked = [] { throw AutomationError(HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)); };
    CHECK(reading(path) == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
}

TEST_CASE_FIXTURE(
    LogPage,
    "a log is read that is read-only or held open for appending by the engine, which can write, "
    "rename and delete it meanwhile") {
    folder.Write(L"closed.log", "A\r\nB\r\n");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    closedLog.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Texts{L"B", L"A"});
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    const FileHandle engine(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    REQUIRE(engine);
    const ImportFake<"GetFileSizeEx", decltype(&GetFileSizeEx)> fake{
        "kernel32.dll", [&](HANDLE file, PLARGE_INTEGER size) {
            const BOOL result = fake.Original(file, size);
            DWORD done = 0;
            CHECK(WriteFile(engine.Get(), "C\r\n", 3, &done, nullptr));
            CHECK(MoveFileW(path.c_str(), folder.Path(L"moved.log").c_str()));
            return result;
        }};
    closedLog.ReadClosedLog();
    // Appended after the opening, C belongs to the next reading.
    CHECK(RowsOf(lstClosedWnd) == Texts{L"B", L"A"});
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
    CHECK(ErrorOf([&] { closedLog.ReadClosedLog(); }) == E_OUTOFMEMORY);
    CHECK(RowsOf(lstClosedWnd) == Texts{L"newest", L"newer"});
    std::string lines;
    for (int i = 1; i <= 30; ++i)
        lines += "line " + std::to_string(i) + "\r\n";
    Append(path, lines);
    closedLog.ReadClosedLog();
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
    closedLog.ReadClosedLog();
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
