// A log that repeats one line all through, so that the search for the 25 newest distinct lines goes back to
// its beginning, beside reading the same file into a buffer and forgetting it.
#include <windows.h>
#include <psapi.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/comparison.h"
#include "bench/support/log_files.h"
#include "bench/support/run_benchmark.h"
#include "lists/log_file.h"
#include "lists/newest_lines.h"

namespace {

constexpr double kWanted = 2;  // at least half the speed of reading
constexpr char kLine[] = "http://ads.example.com/popup/window.html?campaign=12345&source=page";

void ReadNewest(const std::wstring& path, size_t lines) {
    const LogFile log(path);
    size_t kept = 0;
    ReadNewestLines(
        log.Size(),
        [&](std::uint64_t offset, char* buffer, size_t count) { log.Read(offset, buffer, count); },
        [&](std::string_view) {
            ++kept;
            return true;
        },
        25);
    if (kept != lines) throw std::runtime_error("not the lines that are there");
}

size_t PeakWorkingSet() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters))) return 0;
    return counters.PeakWorkingSetSize;
}

void Compare(const std::wstring& folder, const char* what, const std::vector<std::string>& lines) {
    const std::wstring path = folder + L"repeated.log";
    const auto compare = [&](const char* size, std::uint64_t bytes, int rounds, double wanted) {
        WriteLog(path, bytes, [&](size_t n) { return lines[n % lines.size()]; });
        Report({.what = what,
                .size = size,
                .measured = {"`ReadNewestLines`", [&] { ReadNewest(path, lines.size()); }},
                .beside = {"reading the file into a buffer of the same size", [&] { ReadThrough(path); }},
                .rounds = rounds,
                .wanted = wanted});
        return PeakWorkingSet();
    };
    const size_t before = compare("1 MB", kMegabyte, 25, 0);
    const size_t after = compare("1 GB", kGigabyte, 9, lines.size() == 1 ? kWanted : 0);
    DeleteFileW(path.c_str());
    char figure[128];
    std::snprintf(figure, sizeof(figure), "peak working set %zu KB after 1 MB, %zu KB after 1 GB",
                  before / 1024, after / 1024);
    ReportFigure(what, "memory", figure);
    if (after > before + kMegabyte / 2) throw std::runtime_error("the working set grows with the log");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return RunBenchmark([&] {
        const std::wstring folder = FolderFor(count, arguments);
        Compare(folder, "Log of one repeated line", {kLine});
        std::vector<std::string> twentyFour;
        for (int n = 0; n < 24; ++n)
            twentyFour.push_back(kLine + std::to_string(n));
        Compare(folder, "Log of 24 repeated lines", twentyFour);
    });
}
