#include "tests/check_kit/machine.h"

#include <windows.h>
#include <process.h>
#include <shlobj.h>
#include <tlhelp32.h>

#include <iterator>
#include <vector>

#include "platform/dpi.h"
#include "platform/handle.h"
#include "platform/system_library.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/manager.h"
#include "tests/support/wine.h"
#include "version.h"

namespace {

constexpr const wchar_t* kServers[] = {L"SentrelConfig.exe", L"SentrelStandin.exe"};

std::vector<PROCESSENTRY32W> Processes() {
    std::vector<PROCESSENTRY32W> processes;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        processes.push_back(entry);
    }
    return processes;
}

// Null where the process is none of the kit's programs, or must not be opened.
ProcessHandle OpenOwn(DWORD id, DWORD rights = 0) {
    ProcessHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | rights, FALSE, id));
    wchar_t path[1024]{};
    DWORD length = static_cast<DWORD>(std::size(path));
    QueryFullProcessImageNameW(process.Get(), 0, path, &length);
    if (!UpperCase(path).starts_with(UpperCase(KitFolder()))) process.Reset();
    return process;
}

// GetVersionEx tells what the manifest asks for.
std::string WindowsVersion() {
    using GetVersion = LONG WINAPI(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (auto* const get = FunctionOf<GetVersion>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion"))
        get(&version);
    return std::to_string(version.dwMajorVersion) + '.' + std::to_string(version.dwMinorVersion) + '.' +
           std::to_string(version.dwBuildNumber) + ' ' + ToAnsi(version.szCSDVersion);
}

}  // namespace

std::wstring KitFolder() {
    const std::wstring suites = ServerDirectory();
    return suites.substr(0, suites.find_last_of(L'\\') + 1);
}

std::string RegisterOwnServers() {
    for (const wchar_t* const server : kServers) {
        const auto code = _wspawnl(_P_WAIT, (KitFolder() + server).c_str(), server, L"/RegServer", nullptr);
        if (code != 0) return ToAnsi(server) + " /RegServer ended with " + std::to_string(code) + '\n';
    }
    return {};
}

void EndOwnPrograms() {
    constexpr DWORD kTimeToEnd = 10000;  // milliseconds
    bool ended = false;
    for (const PROCESSENTRY32W& each : Processes()) {
        if (each.th32ProcessID == GetCurrentProcessId()) continue;
        const ProcessHandle process = OpenOwn(each.th32ProcessID, PROCESS_TERMINATE | SYNCHRONIZE);
        if (!process || WaitForSingleObject(process.Get(), kTimeToEnd) == WAIT_OBJECT_0) continue;
        TerminateProcess(process.Get(), 1);
        WaitForSingleObject(process.Get(), kTimeToEnd);
        ended = true;
    }
    if (ended) ForgetKilledServers();
}

std::string Surroundings() {
    BOOL isWow64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &isWow64);
    const int dpi = DpiOf(nullptr);
    wchar_t language[LOCALE_NAME_MAX_LENGTH]{};
    GetUserDefaultLocaleName(language, static_cast<int>(std::size(language)));
    return "Calvane: " CALVANE_VERSION "\nSystem: Windows " + WindowsVersion() + ", " +
           (isWow64 ? "64 bits" : "32 bits") +
           (RunsUnderWine() ? std::string(", as Wine ") + WineVersion() + " plays it" : "") +
           "\nRegistered: " +
           (RunsUnderWine() ? "for the machine, since Wine does not find a user's classes"
                            : "for the user alone") +
           "\nScale: " + std::to_string(MulDiv(100, dpi, kDefaultDpi)) + " % (" + std::to_string(dpi) +
           " dpi)\nScreen: " + std::to_string(GetSystemMetrics(SM_CXSCREEN)) + " x " +
           std::to_string(GetSystemMetrics(SM_CYSCREEN)) +
           ", monitors: " + std::to_string(GetSystemMetrics(SM_CMONITORS)) +
           "\nLanguage: " + ToAnsi(language) + ", code page " + std::to_string(GetACP()) + '\n';
}

std::string Obstacle() {
    if (!RunsUnderWine() && IsUserAnAdmin()) {
        return "It would register Calvane for everybody. Start it without \"Run as administrator\".";
    }
    for (const PROCESSENTRY32W& each : Processes()) {
        for (const wchar_t* const server : kServers) {
            if (lstrcmpiW(each.szExeFile, server) == 0 && !OpenOwn(each.th32ProcessID))
                return ToAnsi(server) + " runs. Exit Calvane by its icon's menu, then start this again.";
        }
    }
    return {};
}
