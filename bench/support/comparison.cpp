#include "bench/support/comparison.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace {

double Milliseconds() {
    LARGE_INTEGER now{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

double TimeOf(const Side& side, int repeats) {
    double total = 0;
    for (int i = 0; i < repeats; ++i) {
        side.prepare();
        const double start = Milliseconds();
        side.run();
        total += Milliseconds() - start;
    }
    return total / repeats;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

std::vector<Times> Measure(const Comparison& comparison) {
    const auto measured = [&] { return TimeOf(comparison.measured, comparison.repeats); };
    const auto beside = [&] { return TimeOf(comparison.beside, comparison.repeats); };
    measured();
    beside();
    std::vector<Times> rounds;
    for (int round = 0; round < comparison.rounds; ++round) {
        Times times{};
        if (round % 2 == 0) {
            times.measured = measured();
            times.beside = beside();
        } else {
            times.beside = beside();
            times.measured = measured();
        }
        rounds.push_back(times);
    }
    return rounds;
}

void Report(const Comparison& comparison) {
    std::vector<double> measured;
    std::vector<double> beside;
    std::vector<double> ratios;
    for (const Times& times : Measure(comparison)) {
        measured.push_back(times.measured);
        beside.push_back(times.beside);
        ratios.push_back(times.measured / times.beside);
    }
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    const double median = Median(ratios);
    std::string wanted = "-";
    if (comparison.wanted > 0) {
        char text[64];
        std::snprintf(text, sizeof(text), "%.2f: %s", comparison.wanted,
                      median <= comparison.wanted ? "reached" : "**missed**");
        wanted = text;
    }
    std::printf("| %s | %s | %s | %.3f | %s | %.3f | %.2f | %.2f | %.2f | %s |\n", comparison.what.c_str(),
                comparison.size.c_str(), comparison.measured.name.c_str(), Median(measured),
                comparison.beside.name.c_str(), Median(beside), *least, median, *most, wanted.c_str());
    std::fflush(stdout);
}

void ReportFigure(const std::string& what, const std::string& size, const std::string& figure) {
    std::printf("| %s | %s | %s | - | - | - | - | - | - | - |\n", what.c_str(), size.c_str(), figure.c_str());
    std::fflush(stdout);
}

std::wstring FolderFor(int count, wchar_t** arguments) {
    if (count < 2) throw std::runtime_error("the folder for large files is missing");
    std::wstring folder = arguments[1];
    if (!folder.ends_with(L'\\')) folder += L'\\';
    return folder;
}
