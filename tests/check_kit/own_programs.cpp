#include "tests/check_kit/own_programs.h"

#include <windows.h>
#include <process.h>
#include <tlhelp32.h>

#include <iterator>

#include "platform/handle.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"

namespace {

struct Process {
    DWORD id;
    std::wstring name;
};

std::vector<Process> Processes() {
    std::vector<Process> processes;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        processes.push_back({entry.th32ProcessID, entry.szExeFile});
    }
    return processes;
}

// Empty where it must not be asked for.
std::wstring PathOf(HANDLE process) {
    wchar_t path[1024];
    DWORD length = static_cast<DWORD>(std::size(path));
    return QueryFullProcessImageNameW(process, 0, path, &length) ? std::wstring(path, length) : L"";
}

bool IsOwn(HANDLE process) {
    return UpperCase(PathOf(process)).starts_with(UpperCase(KitFolder()));
}

}  // namespace

std::wstring KitFolder() {
    const std::wstring suites = ServerDirectory();
    return suites.substr(0, suites.find_last_of(L'\\') + 1);
}

std::string RegisterOwnServers() {
    for (const wchar_t* const server : {L"SentrelConfig.exe", L"SentrelStandin.exe"}) {
        const auto code = _wspawnl(_P_WAIT, (KitFolder() + server).c_str(), server, L"/RegServer", nullptr);
        if (code != 0) return ToAnsi(server) + " /RegServer ended with " + std::to_string(code);
    }
    return {};
}

void EndOwnPrograms() {
    constexpr DWORD kTimeToEnd = 10000;  // milliseconds
    bool ended = false;
    for (const Process& each : Processes()) {
        if (each.id == GetCurrentProcessId()) continue;
        const ProcessHandle process(
            OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE | SYNCHRONIZE, FALSE, each.id));
        if (!process || !IsOwn(process.Get())) continue;
        if (WaitForSingleObject(process.Get(), kTimeToEnd) == WAIT_OBJECT_0) continue;
        TerminateProcess(process.Get(), 1);
        WaitForSingleObject(process.Get(), kTimeToEnd);
        ended = true;
    }
    if (ended) ForgetKilledServers();
}

std::string ForeignProgram(const std::vector<std::wstring>& names) {
    for (const Process& each : Processes()) {
        for (const std::wstring& name : names) {
            if (UpperCase(each.name) != UpperCase(name)) continue;
            const ProcessHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, each.id));
            if (!process || !IsOwn(process.Get())) return ToAnsi(name);
        }
    }
    return {};
}
