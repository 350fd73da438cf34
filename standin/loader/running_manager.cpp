#include "standin/loader/running_manager.h"

#include <tlhelp32.h>

#include <array>
#include <string_view>

#include "platform/executable_path.h"

namespace {

constexpr wchar_t kManager[] = L"SentrelConfig.exe";

// COM gives a client no server of another session or user, and no elevated one to a client that is not: each
// of these has a logon of its own.
bool GetLogon(HANDLE process, LUID& logon) {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(process, TOKEN_QUERY, &opened)) return false;
    const TokenHandle token(opened);
    TOKEN_STATISTICS statistics{};
    DWORD size = 0;
    if (!GetTokenInformation(token.Get(), TokenStatistics, &statistics, sizeof(statistics), &size))
        return false;
    logon = statistics.AuthenticationId;
    return true;
}

bool IsOfOwnLogon(HANDLE process) {
    LUID own{};
    LUID other{};
    return GetLogon(GetCurrentProcess(), own) && GetLogon(process, other) && own.LowPart == other.LowPart &&
           own.HighPart == other.HighPart;
}

// The folder alone: an upgrade may have renamed the file of a manager that runs.
bool RunsFromOwnFolder(HANDLE process) {
    std::array<wchar_t, 32768> buffer;
    auto length = static_cast<DWORD>(buffer.size());
    if (!QueryFullProcessImageNameW(process, 0, buffer.data(), &length)) return false;
    const std::wstring_view path(buffer.data(), length);
    const std::wstring own = ExecutablePath();
    const std::wstring_view folder = path.substr(0, path.rfind(L'\\'));
    const std::wstring_view ownFolder = std::wstring_view(own).substr(0, own.rfind(L'\\'));
    return CompareStringOrdinal(folder.data(), static_cast<int>(folder.size()), ownFolder.data(),
                                static_cast<int>(ownFolder.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace

ProcessHandle RunningManager() {
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        if (lstrcmpiW(entry.szExeFile, kManager) != 0) continue;
        ProcessHandle process(
            OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, entry.th32ProcessID));
        if (process && RunsFromOwnFolder(process.Get()) && IsOfOwnLogon(process.Get())) return process;
    }
    return {};
}
