#include "tests/support/program.h"

#include <tlhelp32.h>

#include <stdexcept>

#include "platform/handle.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/message_pump.h"

std::vector<DWORD> ProcessesOf(const wchar_t* program) {
    std::vector<DWORD> ids;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        if (lstrcmpiW(entry.szExeFile, program) == 0) ids.push_back(entry.th32ProcessID);
    }
    return ids;
}

bool ProgramEnds(const wchar_t* program, DWORD milliseconds) {
    return PumpUntil([&] { return ProcessesOf(program).empty(); }, milliseconds);
}

namespace {

// Of the build; the caller closes the process.
HANDLE Start(const wchar_t* program, const std::wstring& arguments) {
    std::wstring path = ServerDirectory();
    path.resize(path.find_last_of(L'\\') + 1);
    std::wstring commandLine = L'"' + path + program + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        throw std::runtime_error("not started: " + ToAnsi(commandLine));
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

}  // namespace

DWORD RunProgram(const wchar_t* program, const std::wstring& arguments, DWORD milliseconds) {
    const HANDLE process = Start(program, arguments);
    PumpUntil([&] { return WaitForSingleObject(process, 0) == WAIT_OBJECT_0; }, milliseconds);
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return code;
}

void StartServerAhead(const wchar_t* program) {
    if (!ProcessesOf(program).empty()) return;
    const HANDLE process = Start(program, L"-Embedding");
    WaitForInputIdle(process, 5000);
    CloseHandle(process);
}
