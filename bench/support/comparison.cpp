#include "bench/support/comparison.h"

#include <windows.h>
#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "platform/automation_error.h"
#include "tests/support/crash_watch.h"

namespace {

double TimeOf(const Side& side, int repeats) {
    double total = 0;
    for (int i = 0; i < repeats; ++i) {
        side.prepare();
        if (side.time) {
            total += side.time();
        } else {
            const double start = Milliseconds();
            side.run();
            total += Milliseconds() - start;
        }
        side.finish();
    }
    return total / repeats;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string Formatted(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof(text), format, number);
    return text;
}

std::string RatioText(double ratio) {
    return Formatted(ratio < 0.1 ? "%.2g" : "%.2f", ratio);
}

}  // namespace

double Milliseconds() {
    LARGE_INTEGER now{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

std::string Verdict(bool isReached) {
    return isReached ? "reached" : "**missed**";
}

std::vector<Times> Measure(const Comparison& comparison) {
    const auto measured = [&] { return TimeOf(comparison.measured, comparison.repeats); };
    const auto beside = [&] { return TimeOf(comparison.beside, comparison.repeats); };
    for (int round = 0; round < comparison.warmUps; ++round) {
        measured();
        beside();
    }
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
    std::vector<double> differences;
    for (const Times& times : Measure(comparison)) {
        measured.push_back(times.measured);
        beside.push_back(times.beside);
        ratios.push_back(times.measured / times.beside);
        differences.push_back(times.measured - times.beside);
    }
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    const double median = Median(ratios);
    std::string wanted = "-";
    if (comparison.wanted > 0) {
        wanted = Formatted("%.2f: ", comparison.wanted) + Verdict(median <= comparison.wanted);
    } else if (comparison.wantedAbove > 0) {
        const double above = Median(differences);
        wanted = Formatted("%g ms above: ", comparison.wantedAbove) +
                 Verdict(above <= comparison.wantedAbove) + Formatted(", %.3f ms", above);
    }
    std::printf("| %s | %s | %s | %.3f ms | %s | %.3f ms | %s | %s | %s | %s |\n", comparison.what.c_str(),
                comparison.size.c_str(), comparison.measured.name.c_str(), Median(measured),
                comparison.beside.name.c_str(), Median(beside), RatioText(*least).c_str(),
                RatioText(median).c_str(), RatioText(*most).c_str(), wanted.c_str());
    std::fflush(stdout);
}

void ReportAmounts(const std::string& what, const std::string& size, const Amount& measured,
                   const Amount& beside, const std::string& unit, double wanted) {
    const double ratio = measured.value / beside.value;
    const std::string verdict =
        wanted > 0 ? Formatted("%.2f: ", wanted) + Verdict(ratio <= wanted) : std::string("-");
    std::printf("| %s | %s | %s | %.0f %s | %s | %.0f %s | - | %.2f | - | %s |\n", what.c_str(), size.c_str(),
                measured.name.c_str(), measured.value, unit.c_str(), beside.name.c_str(), beside.value,
                unit.c_str(), ratio, verdict.c_str());
    std::fflush(stdout);
}

void ReportFigure(const std::string& what, const std::string& size, const std::string& figure,
                  const std::string& wanted) {
    std::printf("| %s | %s | %s | - | - | - | - | - | - | %s |\n", what.c_str(), size.c_str(), figure.c_str(),
                wanted.c_str());
    std::fflush(stdout);
}

std::wstring FolderFor(int count, wchar_t** arguments) {
    if (count < 2) throw std::runtime_error("the folder for large files is missing");
    std::wstring folder = arguments[1];
    if (!folder.ends_with(L'\\')) folder += L'\\';
    return folder;
}

int RunBenchmark(const std::function<void()>& body) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    try {
        body();
        return 0;
    } catch (const AutomationError& error) {
        std::fprintf(stderr, "Automation error 0x%08lX\n", static_cast<unsigned long>(error.Code()));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}

// The tests' message pump asks. The watch itself belongs to their runner.
bool HasCrashed() {
    return false;
}
