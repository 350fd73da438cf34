// Runs the suites beside it and writes the report of the check kit; check.cmd starts it.
//
//   run_suites /ready      ends with 0 where programs are registered for the user alone, with 1 under
//                          Wine, where they are for the machine, with 2 where nothing can be run
//   run_suites [SUITE...]  all of suites.txt, or some; ends with 0 when no test failed, with 2 for a
//                          wrong name
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "platform/handle.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/check_kit/machine.h"
#include "tests/support/manager.h"
#include "tests/support/user_locale.h"
#include "tests/support/wine.h"

namespace {

enum ExitCode : int { kPassed = 0, kForMachine = 1, kNotPassed = 1, kCannotRun = 2 };

// A line of suites.txt: "NAME SECONDS", or "NAME - why it is not in the kit".
struct Suite {
    std::string name;
    DWORD seconds = 0;
    std::string leftOut;
};

struct Counts {
    long passed = 0;
    long failed = 0;
    long skipped = 0;
};

struct Outcome {
    Counts counts;
    std::string skipped;  // a line for each skipped test case
    std::string note;     // of a suite that did not end by itself
    std::string output;
};

std::string TextOf(const Counts& counts) {
    return std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed, " +
           std::to_string(counts.skipped) + " skipped";
}

// Its text; empty where there is none.
std::string TextOfFile(const std::wstring& path) {
    std::ifstream file{std::filesystem::path(path)};
    return {std::istreambuf_iterator<char>(file), {}};
}

// Those of the names, all where there is none; empty where a name is wrong.
std::vector<Suite> ReadSuites(const std::vector<std::string>& names) {
    std::vector<Suite> suites;
    std::istringstream lines(TextOfFile(ServerDirectory() + L"\\suites.txt"));
    for (std::string line; std::getline(lines, line);) {
        Suite suite;
        std::istringstream words(line);
        words >> suite.name;
        if (!(words >> suite.seconds)) suite.leftOut = line.substr(line.find(" - ") + 3);
        if (names.empty() || std::ranges::count(names, suite.name) != 0) suites.push_back(suite);
    }
    if (names.empty() || suites.size() == names.size()) return suites;
    std::puts("tests\\suites.txt tells the names; one of these is not there, or is given twice.");
    return {};
}

// Whether the program ended in time; its exit code.
bool RunProgram(const std::wstring& program, const std::wstring& log, DWORD seconds, DWORD& code) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    const FileHandle output(CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        &inheritable, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::wstring commandLine = L'"' + program + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.Get();
    startup.hStdError = output.Get();
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &started)) {
        code = GetLastError();
        return true;
    }
    CloseHandle(started.hThread);
    const ProcessHandle process(started.hProcess);
    const bool ended = WaitForSingleObject(process.Get(), seconds * 1000) == WAIT_OBJECT_0;
    if (!ended) TerminateProcess(process.Get(), 1);
    GetExitCodeProcess(process.Get(), &code);
    return ended;
}

// Whether doctest has printed a summary. A suite may start itself, so that the last one counts.
bool ReadOutput(Outcome& outcome) {
    bool hasSummary = false;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) {
        constexpr std::string_view kSkipped = "[skipped] ";
        if (line.starts_with(kSkipped)) {
            outcome.skipped += "    skipped: " + line.substr(kSkipped.size()) + '\n';
            ++outcome.counts.skipped;
        }
        long all = 0;
        if (std::sscanf(line.c_str(), "[doctest] test cases: %ld | %ld passed | %ld failed", &all,
                        &outcome.counts.passed, &outcome.counts.failed) == 3) {
            hasSummary = true;
        }
    }
    return hasSummary;
}

// Runs the suite beside this program, for its seconds at most. Its output is kept in the kit's folder.
Outcome Run(const Suite& suite) {
    const std::wstring name = FromAnsi(suite.name);
    const std::wstring log = KitFolder() + L"logs\\" + name + L".txt";
    const std::wstring current = log + L".current";
    SetEnvironmentVariableW(L"TEST_CURRENT", current.c_str());
    Outcome outcome;
    DWORD code = 0;
    const bool ended = RunProgram(ServerDirectory() + L'\\' + name + L".exe", log, suite.seconds, code);
    outcome.output = TextOfFile(log);
    const bool hasSummary = ReadOutput(outcome);
    if (!ended) {
        outcome.note = "stopped after " + std::to_string(suite.seconds) + " s";
    } else if (!hasSummary) {
        outcome.note = "ended without a summary, exit code " + std::to_string(code);
    } else if (code != 0 && outcome.counts.failed == 0) {
        outcome.note = "exit code " + std::to_string(code);
    }
    if (!outcome.note.empty()) {
        std::string inCase = TextOfFile(current);
        inCase.resize(inCase.find_last_not_of('\n') + 1);
        outcome.note = " (" + outcome.note + ", in test case: " + inCase + ')';
        outcome.counts.failed = std::max(outcome.counts.failed, 1L);
    }
    DeleteFileW(current.c_str());
    return outcome;
}

int IsReady() {
    const std::string obstacle = Obstacle();
    if (obstacle.empty()) return RunsUnderWine() ? kForMachine : kPassed;
    std::puts(obstacle.c_str());
    return kCannotRun;
}

int RunSuites(const std::vector<std::string>& names) {
    const std::vector<Suite> suites = ReadSuites(names);
    if (suites.empty()) return kCannotRun;
    CreateDirectoryW((KitFolder() + L"logs").c_str(), nullptr);
    std::ofstream report{std::filesystem::path(KitFolder() + L"report.txt")};
    // On the screen too.
    const auto tell = [&](const std::string& text) {
        report << text << std::flush;
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    };
    const auto now = [] {
        char text[32];
        const std::time_t time = std::time(nullptr);
        std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M\n", std::localtime(&time));
        return std::string(text);
    };

    tell(Surroundings() + "Started: " + now() + '\n');
    EndOwnPrograms();
    // Texts of the tests have a decimal point.
    const Separators separators(L".", L",");
    Counts total;
    std::string failures;
    for (const Suite& suite : suites) {
        if (!suite.leftOut.empty()) {
            ++total.skipped;
            tell(suite.name + ": skipped: " + suite.leftOut + '\n');
            continue;
        }
        // The suite before may have been stopped while they were not.
        tell(RegisterOwnServers());
        const auto [counts, skipped, note, output] = Run(suite);
        EndOwnPrograms();
        tell(suite.name + ": " + TextOf(counts) + note + '\n' + skipped);
        total.passed += counts.passed;
        total.failed += counts.failed;
        total.skipped += counts.skipped;
        if (counts.failed != 0) failures += "\n=== " + suite.name + "\n" + output;
    }
    tell("\nEnded: " + now() + "Total: " + TextOf(total) + '\n');
    report << failures;
    return total.passed > 0 && total.failed == 0 ? kPassed : kNotPassed;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    // A program that crashes ends at once; the suites inherit it.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    std::vector<std::string> names;
    for (int i = 1; i < count; ++i)
        names.push_back(ToAnsi(arguments[i]));
    return names == std::vector<std::string>{"/ready"} ? IsReady() : RunSuites(names);
}
