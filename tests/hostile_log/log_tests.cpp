// Everything that may lie where the engine says its log is.
#include <random>
#include <thread>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/closed_log/log_page.h"
#include "tests/hostile_log/file_faults.h"
#include "tests/support/error_of.h"
#include "tests/support/plain_log.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

using Rows = std::vector<std::wstring>;

// The rows that a log comes to, by the plain reading.
Rows PlainRows(const std::string& log) {
    Rows rows;
    const auto upToNul = [](const std::string& line) { return line.substr(0, line.find('\0')); };
    for (const std::string& line : PlainNewestLines(log, 25, upToNul))
        rows.push_back(FromAnsi(upToNul(line)));
    return rows;
}

FileHandle OpenAlone(const std::wstring& path) {
    return FileHandle(
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

void Replace(const std::wstring& path, const std::string& bytes) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD done = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr);
}

void SetSize(const std::wstring& path, long long size) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER position{};
    position.QuadPart = size;
    SetFilePointerEx(file.Get(), position, nullptr, FILE_BEGIN);
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

TEST_CASE_FIXTURE(LogPage,
                  "every call of a file function may fail: the error is told, and what was read is shown") {
    path = folder.Write(L"closed.log", LongLog());
    const Rows all = PlainRows(LongLog());
    FileFaults faults;
    long count = 0;
    for (const int function :
         {FileFaults::Create, FileFaults::Type, FileFaults::Size, FileFaults::Position, FileFaults::Read}) {
        for (const DWORD error :
             {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY,
              ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_HANDLE_EOF}) {
            for (long k = 1;; ++k) {
                INFO("function " << function << " call " << k << " error " << error);
                faults.function = function;
                faults.error = error;
                faults.failing = k;
                const HRESULT result = faults.Read1(log);
                if (!faults.happened) {
                    CHECK(result == S_OK);
                    const bool isWhole = RowsOf(lstClosedWnd) == all;
                    CHECK(isWhole);
                    break;
                }
                ++count;
                // A file of an unknown kind is no file on a disk.
                CHECK(result ==
                      HRESULT_FROM_WIN32(function == FileFaults::Type ? ERROR_NOT_SUPPORTED : error));
                const Rows rows = RowsOf(lstClosedWnd);
                const bool areFirst = std::equal(rows.begin(), rows.end(), all.begin());
                CHECK(areFirst);
                CHECK(static_cast<bool>(OpenAlone(path)));
            }
        }
    }
    CHECK(count >= 7 * 7);
    MESSAGE("file calls that fail: " << count);
}

TEST_CASE_FIXTURE(LogPage, "reads that deliver less than was asked for are put together") {
    path = folder.Write(L"closed.log", LongLog());
    FileFaults faults;
    for (const DWORD most : {1UL, 7UL, 4096UL, 65535UL}) {
        faults.longestRead = most;
        if (most == 1) path = folder.Write(L"closed.log", LongLog().substr(220000));
        CHECK(faults.Read1(log) == S_OK);
        const bool isSame = RowsOf(lstClosedWnd) == PlainRows(BytesOf(path));
        CHECK(isSame);
        if (most == 1) path = folder.Write(L"closed.log", LongLog());
    }
}

TEST_CASE_FIXTURE(LogPage,
                  "a log that grows, shrinks or is replaced between two blocks is read or given up") {
    const std::string bytes = LongLog();
    const Rows all = PlainRows(bytes);
    long count = 0;
    for (const long call : {1L, 2L, 3L, 4L}) {
        for (int change = 0; change < 6; ++change) {
            INFO("change " << change << " before block " << call);
            path = folder.Write(L"closed.log", bytes);
            FileFaults faults;
            faults.beforeRead = [&](long read) {
                if (read != call) return;
                switch (change) {
                    case 0:
                        return Append(path, "appended\r\n");
                    case 1:
                        return SetSize(path, 0);
                    case 2:
                        return SetSize(path, 100);
                    case 3:
                        return Replace(path, std::string(bytes.size(), '\n'));
                    case 4:
                        return Replace(path, std::string(bytes.size(), 'z'));
                    default:
                        DeleteFileW(path.c_str());
                        return Replace(path, "new\r\n");
                }
            };
            const HRESULT result = faults.Read1(log);
            const Rows rows = RowsOf(lstClosedWnd);
            CHECK((result == S_OK || result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)));
            CHECK(rows.size() <= 25);
            // What had been read before the change is there.
            const size_t before = std::min<size_t>(rows.size(), static_cast<size_t>(call - 1) * 6);
            CHECK(std::equal(rows.begin(), rows.begin() + static_cast<int>(before), all.begin()));
            const bool isWhole = rows == all;
            if (change == 0) CHECK(isWhole);
            if (change == 1) CHECK(result == HRESULT_FROM_WIN32(ERROR_HANDLE_EOF));
            ++count;
        }
    }
    MESSAGE("logs that change while they are read: " << count);
}

TEST_CASE_FIXTURE(LogPage, "logs of any bytes are shown as the plain reading has them") {
    constexpr unsigned kSeed = 97531;
    std::mt19937 random(kSeed);
    const std::string alphabets[] = {"ab\r\n", "a\n", std::string("\0\n\r\x1a", 4), "\x80\xff\xc3\xa4\n",
                                     "abcdefgh/:.\r\n"};
    long count = 0;
    for (int i = 0; i < 300; ++i) {
        INFO("log " << i << " of seed " << kSeed);
        std::string bytes(random() % (i % 10 == 0 ? 200000 : 300), '\0');
        const std::string& alphabet = alphabets[static_cast<size_t>(i) % std::size(alphabets)];
        for (char& each : bytes)
            each = i % 7 == 0 ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        const bool isSame = Show(bytes) == PlainRows(bytes);
        CHECK(isSame);
        ++count;
    }
    for (const std::string& bytes :
         {std::string(1000000, '\0'), std::string(1000000, '\n'), std::string(1000000, '\r'),
          std::string(300000, 'x'), "\r\n"s + std::string(200000, '\0')}) {
        const bool isSame = Show(bytes) == PlainRows(bytes);
        CHECK(isSame);
        ++count;
    }
    MESSAGE("logs of any bytes: " << count << ", seed " << kSeed);
}

TEST_CASE_FIXTURE(LogPage, "a single line of 100 MB is shown, or given up for want of memory") {
    {
        const FileHandle file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        const std::string block(1 << 20, 'x');
        DWORD done = 0;
        for (int i = 0; i < 100; ++i)
            WriteFile(file.Get(), block.data(), static_cast<DWORD>(block.size()), &done, nullptr);
    }
    const DWORD start = GetTickCount();
    const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
    const DWORD duration = GetTickCount() - start;
    CHECK((result == S_OK || result == E_OUTOFMEMORY));
    if (result == S_OK) {
        REQUIRE(lstClosedWnd.ListCount() == 1);
        CHECK(lstClosedWnd.Length(0) == 100U << 20);
    }
    MESSAGE("a line of 100 MB: " << std::string(result == S_OK ? "shown" : "given up") << " after "
                                 << duration << " ms");
    CHECK(Show("A\r\n") == Rows{L"A"});
}

TEST_CASE_FIXTURE(
    LogPage, "a line of more bytes than memory can hold is given up, and the lines behind it are shown") {
    SetSize(path, 5'000'000'000);
    Append(path, "\r\nnewer\r\nnewest\r\n");
    const DWORD start = GetTickCount();
    const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
    const DWORD duration = GetTickCount() - start;
    CHECK(result == E_OUTOFMEMORY);
    CHECK(RowsOf(lstClosedWnd) == Rows{L"newest", L"newer"});
    MESSAGE("a line of 5 GB: given up after " << duration << " ms");
    CHECK(Show("A\r\n") == Rows{L"A"});
}

TEST_CASE_FIXTURE(LogPage, "what is no file is not waited for") {
    long count = 0;
    for (const wchar_t* const name : {L"NUL",
                                      L"CON",
                                      L"CONIN$",
                                      L"CONOUT$",
                                      L"COM1",
                                      L"LPT1",
                                      L"PRN",
                                      L"AUX",
                                      L"\\\\.\\NUL",
                                      L"\\\\.\\COM1",
                                      L"\\\\.\\PhysicalDrive0",
                                      L"\\\\.\\C:",
                                      L"\\\\.\\pipe\\no such pipe",
                                      L"\\\\.\\pipe\\",
                                      L"\\\\.\\mailslot\\x",
                                      L"C:\\",
                                      L"C:",
                                      L".",
                                      L"..",
                                      L"\\",
                                      L"\\\\",
                                      L"\\\\?\\",
                                      L"\\\\?\\C:\\",
                                      L"::",
                                      L"a<b",
                                      L"a|b",
                                      L"*",
                                      L"a\tb",
                                      L"http://host/log"}) {
        INFO(ToAnsi(name));
        path = name;
        const DWORD start = GetTickCount();
        ErrorOf([&] { log.ReadClosedLog(); });
        CHECK(GetTickCount() - start < 3000);
        ++count;
    }
    path = std::wstring(40000, L'x');
    CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
    path = folder.Folder();
    while (path.size() < 300)
        path += L"\\missing";
    CHECK(FAILED(ErrorOf([&] { log.ReadClosedLog(); })));
    MESSAGE("paths of what is no file: " << count + 2);
}

TEST_CASE_FIXTURE(LogPage, "a pipe that announces bytes and never delivers them is not waited for") {
    const std::wstring name = L"\\\\.\\pipe\\calvane_hostile_log_" + std::to_wstring(GetCurrentProcessId());
    const FileHandle server(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1,
                                             4096, 4096, 0, nullptr));
    REQUIRE(server);
    // Windows returns the number of the bytes that wait in the pipe, which somebody else may take.
    struct Fake {
        static BOOL WINAPI Size(HANDLE, PLARGE_INTEGER size) {
            size->QuadPart = 100;
            return TRUE;
        }
    };
    const ImportPatch patch("kernel32.dll", "GetFileSizeEx", &Fake::Size);
    path = name;
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    bool isHung = false;
    std::thread rescue([&] {
        if (WaitForSingleObject(done, 3000) == WAIT_OBJECT_0) return;
        isHung = true;
        const std::string bytes(100, '\n');
        DWORD written = 0;
        WriteFile(server.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    });
    const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
    SetEvent(done);
    rescue.join();
    CloseHandle(done);
    CHECK(FAILED(result));
    CHECK_FALSE(isHung);
    CHECK(lstClosedWnd.ListCount() == 0);
}

TEST_CASE("a log that cannot be read takes nothing else from a load") {
    SettingsWindow page;
    page.Store(L"Startup", L"Startup");
    page.Store(L"Pause Key", L"F7");
    page.Store(L"SoundFile", L"C:\\a.wav");
    page.user.Write(L"Software\\Calvane\\Exclude", L"0", L"http://a");
    for (const wchar_t* const name : {L"NUL", L"\\\\.\\PhysicalDrive0", L"C:\\", L"", L"\\\\.\\pipe\\none"}) {
        page.logFile = [name] { return std::wstring(name); };
        page.popupNotice.m_strSoundFile.clear();
        page.transfer.LoadSettings();
        CHECK(page.cboPauseKey.Text() == L"F7");
        CHECK(page.popupNotice.m_strSoundFile == L"C:\\a.wav");
        CHECK(page.optStartup.Value());
        CHECK(page.ExcludeRows() == Rows{L"http://a"});
        CHECK_FALSE(page.changeMark.m_bLoading);
    }
}
