// Runs the suites beside it and writes the report of the check kit; check.cmd starts it.
//
//   run_suites /ready      ends with 0 where programs are registered for the user alone, with 1 under
//                          Wine, where they are for the machine, with 2 where nothing can be run
//   run_suites [SUITE...]  all of suites.txt, or some; ends with 0 when no test failed, with 2 for a
//                          wrong name
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/check_kit/own_programs.h"
#include "tests/check_kit/suite.h"
#include "tests/check_kit/surroundings.h"
#include "tests/support/user_locale.h"
#include "tests/support/wine.h"

namespace {

enum ExitCode : int { kPassed = 0, kForMachine = 1, kNotPassed = 1, kCannotRun = 2 };

// In the kit's folder, and on the screen.
class Report {
public:
    explicit Report(const std::wstring& path) : m_file(_wfopen(path.c_str(), L"w")) {}
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    ~Report() {
        if (m_file != nullptr) std::fclose(m_file);
    }

    void Write(const std::string& text) const {
        WriteQuietly(text);
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }

    void WriteQuietly(const std::string& text) const {
        if (m_file == nullptr) return;
        std::fputs(text.c_str(), m_file);
        std::fflush(m_file);
    }

private:
    FILE* const m_file;
};

std::string Now() {
    SYSTEMTIME time;
    GetLocalTime(&time);
    char text[32];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d", time.wYear, time.wMonth, time.wDay,
                  time.wHour, time.wMinute);
    return text;
}

int IsReady() {
    const std::string obstacle = Obstacle();
    if (!obstacle.empty()) {
        std::puts(obstacle.c_str());
        return kCannotRun;
    }
    return RunsUnderWine() ? kForMachine : kPassed;
}

// Those of the names; all where there is none. Empty where a name is wrong.
std::vector<Suite> Chosen(const std::vector<Suite>& suites, const std::vector<std::string>& names) {
    if (names.empty()) return suites;
    std::vector<Suite> chosen;
    for (const std::string& name : names) {
        const auto found =
            std::find_if(suites.begin(), suites.end(), [&](const Suite& each) { return each.name == name; });
        if (found == suites.end()) {
            std::printf("%s is not in suites.txt.\n", name.c_str());
            return {};
        }
        chosen.push_back(*found);
    }
    return chosen;
}

struct Totals {
    long passed = 0;
    long failed = 0;
    long skipped = 0;
};

// Adds the suite to the totals; returns what it printed where something failed.
std::string RunAndReport(const Suite& suite, const std::wstring& logs, const Report& report, Totals& totals) {
    if (!suite.leftOut.empty()) {
        ++totals.skipped;
        report.Write(suite.name + ": skipped: " + suite.leftOut + '\n');
        return {};
    }
    // The suite before may have been stopped while they were not.
    const std::string problem = RegisterOwnServers();
    if (!problem.empty()) report.Write(problem + '\n');
    const Outcome outcome = Run(suite, logs);
    EndOwnPrograms();
    totals.passed += outcome.passed;
    totals.failed += outcome.failed;
    totals.skipped += static_cast<long>(outcome.skipped.size());
    report.Write(suite.name + ": " + std::to_string(outcome.passed) + " passed, " +
                 std::to_string(outcome.failed) + " failed, " + std::to_string(outcome.skipped.size()) +
                 " skipped" + (outcome.note.empty() ? "" : " (" + outcome.note + ')') + '\n');
    for (const std::string& skipped : outcome.skipped)
        report.Write("    skipped: " + skipped + '\n');
    return outcome.failed == 0 ? "" : "\n=== " + suite.name + "\n" + outcome.output;
}

int RunSuites(const std::vector<std::string>& names) {
    const std::vector<Suite> suites = Chosen(ReadSuites(ServerDirectory() + L"\\suites.txt"), names);
    if (suites.empty()) return kCannotRun;
    const std::wstring logs = KitFolder() + L"logs";
    CreateDirectoryW(logs.c_str(), nullptr);

    const Report report(KitFolder() + L"report.txt");
    report.Write(Surroundings() + "Started: " + Now() + "\n\n");
    EndOwnPrograms();
    // Texts of the tests have a decimal point.
    const Separators separators(L".", L",");
    Totals totals;
    std::string failures;
    for (const Suite& suite : suites)
        failures += RunAndReport(suite, logs, report, totals);
    report.Write("\nEnded: " + Now() + "\nTotal: " + std::to_string(totals.passed) + " passed, " +
                 std::to_string(totals.failed) + " failed, " + std::to_string(totals.skipped) + " skipped\n");
    report.WriteQuietly(failures);
    return totals.passed > 0 && totals.failed == 0 ? kPassed : kNotPassed;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    // A program that crashes ends at once; the suites inherit it.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    std::vector<std::string> names;
    for (int i = 1; i < count; ++i)
        names.push_back(ToAnsi(arguments[i]));
    if (names == std::vector<std::string>{"/ready"}) return IsReady();
    return RunSuites(names);
}
