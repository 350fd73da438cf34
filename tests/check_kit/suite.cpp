#include "tests/check_kit/suite.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "platform/handle.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/manager.h"

namespace {

// Its text; empty where there is none.
std::string TextOfFile(const std::wstring& path) {
    std::ifstream file{std::filesystem::path(path)};
    return {std::istreambuf_iterator<char>(file), {}};
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
        if (line.starts_with(kSkipped)) outcome.skipped.push_back(line.substr(kSkipped.size()));
        long all = 0;
        if (std::sscanf(line.c_str(), "[doctest] test cases: %ld | %ld passed | %ld failed", &all,
                        &outcome.passed, &outcome.failed) == 3) {
            hasSummary = true;
        }
    }
    return hasSummary;
}

}  // namespace

std::vector<Suite> ReadSuites(const std::wstring& path) {
    std::vector<Suite> suites;
    std::istringstream lines(TextOfFile(path));
    for (std::string line; std::getline(lines, line);) {
        Suite suite;
        std::istringstream words(line);
        words >> suite.name;
        if (!(words >> suite.seconds)) suite.leftOut = line.substr(line.find(" - ") + 3);
        suites.push_back(suite);
    }
    return suites;
}

Outcome Run(const Suite& suite, const std::wstring& folder) {
    const std::wstring log = folder + L'\\' + FromAnsi(suite.name) + L".txt";
    const std::wstring current = log + L".current";
    SetEnvironmentVariableW(L"TEST_CURRENT", current.c_str());
    Outcome outcome;
    DWORD code = 0;
    const bool ended =
        RunProgram(ServerDirectory() + L'\\' + FromAnsi(suite.name) + L".exe", log, suite.seconds, code);
    outcome.output = TextOfFile(log);
    const bool hasSummary = ReadOutput(outcome);
    if (!ended) {
        outcome.note = "stopped after " + std::to_string(suite.seconds) + " s";
    } else if (!hasSummary) {
        outcome.note = "ended without a summary, exit code " + std::to_string(code);
    } else if (code != 0 && outcome.failed == 0) {
        outcome.note = "exit code " + std::to_string(code);
    }
    if (!outcome.note.empty()) {
        outcome.note += ", in test case: " + TextOfFile(current);
        while (outcome.note.ends_with('\n'))
            outcome.note.pop_back();
        if (outcome.failed == 0) outcome.failed = 1;
    }
    DeleteFileW(current.c_str());
    return outcome;
}
