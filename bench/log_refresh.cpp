// What a press of Refresh List costs, from the shortest log to one that no memory holds.
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/comparison.h"
#include "bench/support/log_files.h"
#include "lists/closed_log.h"
#include "lists/exclude_list.h"
#include "platform/automation_error.h"
#include "platform/text.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/plain_log.h"
#include "tests/support/test_window.h"

namespace {

constexpr size_t kEntries = 25;
constexpr int kRounds = 31;
constexpr int kRepeats = 10;
constexpr int kForReading = 1;

std::string DistinctLine(size_t n) {
    char line[96];
    std::snprintf(line, sizeof(line), "http://ads%06zu.example.com/popup/window.html?campaign=%09zu",
                  n % 1000000, n);
    return line;
}

// The Log page over a log of this path.
struct LogPage : LogControls, ExcludeControls {
    explicit LogPage(const std::wstring& logFile) : path(logFile) {}

    // The rows that the page would show, put in as the page does.
    void Fill(const std::vector<std::string>& rows) {
        const RedrawPause pause(lstClosedWnd);
        lstClosedWnd.Clear();
        for (const std::string& row : rows)
            lstClosedWnd.AddItem(FromAnsi(row));
    }

    const std::wstring path;
    ClosedLog log{*this, lstExclude, [this] { return path; }, [] {}};
    TestWindow window{Join({LogControls::all, ExcludeControls::all})};
};

// A member of an object, found once and called often.
class Member {
public:
    Member(IDispatch* object, const wchar_t* name) : m_object(object) {
        ThrowIfFailed(
            object->GetIDsOfNames(IID_NULL, const_cast<wchar_t**>(&name), 1, LOCALE_USER_DEFAULT, &m_id));
    }

    Variant Invoke(WORD kind) const {
        DISPPARAMS none{};
        Variant result;
        ThrowIfFailed(m_object->Invoke(m_id, IID_NULL, LOCALE_USER_DEFAULT, kind, &none, result.Receive(),
                                       nullptr, nullptr));
        return result;
    }

private:
    IDispatch* m_object;
    DISPID m_id = 0;
};

// Reads every line as a script does, and looks at none.
void ReadByScriptingRuntime(IDispatch* fileSystem, const std::wstring& path, size_t lines) {
    const ComPtr<IDispatch> stream =
        ObjectIn(Call(fileSystem, L"OpenTextFile", {path, static_cast<long>(kForReading)}));
    const Member atEnd(stream.Get(), L"AtEndOfStream");
    const Member readLine(stream.Get(), L"ReadLine");
    size_t count = 0;
    for (; !ToBool(atEnd.Invoke(DISPATCH_PROPERTYGET)); ++count)
        readLine.Invoke(DISPATCH_METHOD);
    Call(stream.Get(), L"Close");
    if (count != lines) throw std::runtime_error("the scripting runtime read another number of lines");
}

struct LogSize {
    const char* name;
    std::uint64_t bytes;
    std::uint64_t filler;
    bool forward;
    bool scripting;
    int rounds;  // beside readers of the whole log
};

constexpr LogSize kSizes[] = {{"1 KB", 1 << 10, 0, true, true, 31},
                              {"1 MB", kMegabyte, 0, true, true, 31},
                              {"10 MB", 10 * kMegabyte, 0, true, true, 3},
                              {"100 MB", 100 * kMegabyte, 0, true, false, 3},
                              {"1 GB", kGigabyte, 0, false, true, 1},
                              {"8 GB, sparse in front", kMegabyte, 8 * kGigabyte, false, false, 31}};

void CompareAt(const LogSize& size, const std::wstring& path, IDispatch* fileSystem) {
    size_t lines = 0;
    WriteLog(
        path, size.bytes,
        [&](size_t n) {
            lines = n + 1;
            return DistinctLine(n);
        },
        size.filler);
    LogPage page(path);
    const Side refresh{"`ReadClosedLog`", [&] { page.log.ReadClosedLog(); }};
    refresh.run();
    if (page.lstClosedWnd.ListCount() != static_cast<int>(std::min(lines, kEntries)) ||
        page.lstClosedWnd.List(0) != FromAnsi(DistinctLine(lines - 1))) {
        throw std::runtime_error("not the newest lines");
    }
    const std::vector<std::string> rows = [&] {
        std::vector<std::string> newest;
        for (size_t n = lines; n > 0 && newest.size() < kEntries; --n)
            newest.push_back(DistinctLine(n - 1));
        return newest;
    }();
    Report({.what = "Log refresh",
            .size = size.name,
            .measured = refresh,
            .beside = {"reading the last 64 KB", [&] { ReadLastBlock(path); }},
            .rounds = kRounds,
            .wanted = 2,
            .repeats = kRepeats});
    Report({.what = "Log refresh",
            .size = size.name,
            .measured = refresh,
            .beside = {"reading the last 64 KB and filling the list with its 25 rows",
                       [&] {
                           ReadLastBlock(path);
                           page.Fill(rows);
                       }},
            .rounds = kRounds,
            .wanted = 2,
            .repeats = kRepeats});
    if (size.bytes == kGigabyte) {
        Report({.what = "Log refresh",
                .size = size.name,
                .measured = {"of that, the list box's own messages", [&] { page.Fill(rows); }},
                .beside = refresh,
                .rounds = kRounds,
                .repeats = kRepeats});
    }
    if (size.forward) {
        Report({.what = "Log refresh",
                .size = size.name,
                .measured = refresh,
                .beside = {"reading every line forwards, and filling the list",
                           [&] { page.Fill(PlainNewestLines(Contents(path), kEntries)); }},
                .rounds = size.rounds});
    }
    if (size.scripting) {
        Report({.what = "Log refresh",
                .size = size.name,
                .measured = refresh,
                .beside = {"the scripting runtime's `ReadLine` to the end",
                           [&] { ReadByScriptingRuntime(fileSystem, path, lines); }},
                .rounds = size.rounds,
                .warmUps = size.rounds > 1 ? 1 : 0});
    }
}

// The longest log beside the shortest: what the length itself costs.
void CompareLengths(const std::wstring& folder) {
    const std::wstring shortPath = folder + L"short.log";
    const std::wstring longPath = folder + L"long.log";
    WriteLog(shortPath, 2048, DistinctLine);
    WriteLog(longPath, kGigabyte, DistinctLine);
    {
        LogPage shortPage(shortPath);
        LogPage longPage(longPath);
        Report({.what = "Log refresh",
                .size = "1 GB",
                .measured = {"`ReadClosedLog`", [&] { longPage.log.ReadClosedLog(); }},
                .beside = {"`ReadClosedLog` at 2 KB, which holds 25 lines too",
                           [&] { shortPage.log.ReadClosedLog(); }},
                .rounds = kRounds,
                .repeats = kRepeats});
    }
    DeleteFileW(shortPath.c_str());
    DeleteFileW(longPath.c_str());
}

// The search for the 25 newest distinct lines goes back to the beginning of a log that repeats few lines.
void CompareRepeats(const std::wstring& folder) {
    const std::wstring path = folder + L"repeated.log";
    for (const size_t lines : {size_t{1}, kEntries - 1}) {
        WriteLog(path, kGigabyte, [&](size_t n) { return DistinctLine(n % lines); });
        LogPage page(path);
        Report({.what = "Log refresh, distinct lines repeated: " + std::to_string(lines),
                .size = "1 GB",
                .measured = {"`ReadClosedLog`", [&] { page.log.ReadClosedLog(); }},
                .beside = {"reading the file into a buffer", [&] { ReadThrough(path); }},
                .rounds = 9,
                .wanted = lines == 1 ? 5.0 : 0});
    }
    DeleteFileW(path.c_str());
}

void Run(const std::wstring& folder) {
    const std::wstring path = folder + L"closed.log";
    CLSID classId{};
    ThrowIfFailed(CLSIDFromProgID(L"Scripting.FileSystemObject", &classId));
    ComPtr<IDispatch> fileSystem;
    ThrowIfFailed(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&fileSystem)));
    for (const LogSize& size : kSizes)
        CompareAt(size, path, fileSystem.Get());
    DeleteFileW(path.c_str());
    CompareLengths(folder);
    CompareRepeats(folder);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return RunBenchmark([&] { Run(FolderFor(count, arguments)); });
}
