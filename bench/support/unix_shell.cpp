#include "bench/support/unix_shell.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

#include "bench/support/log_files.h"
#include "platform/text.h"

namespace {

constexpr wchar_t kShell[] = L"Z:\\bin\\bash";
constexpr DWORD kMilliseconds = 60000;

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

bool HasUnixShell() {
    return Exists(kShell);
}

// Wine gives neither handles of such a process nor pipes to it, so that the time comes in a file.
double TimeInUnixShell(const std::string& command, const std::wstring& output, const std::wstring& folder) {
    const std::wstring timeFile = folder + L"time.txt";
    const std::string name = UnixPath(timeFile);
    DeleteFileW(timeFile.c_str());
    const std::string script = "start=${EPOCHREALTIME/./}; " + command + " >" + UnixPath(output) +
                               "; end=${EPOCHREALTIME/./}; echo $((end - start)) >" + name + ".new; mv " +
                               name + ".new " + name;
    std::wstring line = std::wstring(kShell) + L" -c \"" + FromAnsi(script) + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(kShell, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        throw std::runtime_error("a shell cannot be started");
    }
    for (const DWORD begin = GetTickCount(); !Exists(timeFile); Sleep(1)) {
        if (GetTickCount() - begin >= kMilliseconds) throw std::runtime_error("a shell does not end");
    }
    const double microseconds = std::stod(Contents(timeFile));
    DeleteFileW(timeFile.c_str());
    return microseconds / 1000;
}

std::string UnixPath(const std::wstring& path) {
    std::string name = ToAnsi(path.substr(2));
    std::replace(name.begin(), name.end(), '\\', '/');
    return "'" + name + "'";
}
