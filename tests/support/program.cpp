#include "tests/support/program.h"

#include <tlhelp32.h>

#include <stdexcept>
#include <string_view>

#include "platform/handle.h"
#include "platform/text.h"
#include "store/server_directory.h"

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

void KeepProcessIds(const wchar_t* program) {
    for (const DWORD id : ProcessesOf(program))
        OpenProcess(SYNCHRONIZE, FALSE, id);
}

bool ProgramEnds(const wchar_t* program, DWORD milliseconds) {
    return PumpUntil([&] { return ProcessesOf(program).empty(); }, milliseconds);
}

namespace {

constexpr DWORD kStartPatience = 15000;  // milliseconds

struct Started {
    FileHandle process;
    FileHandle thread;
};

// A program of the build.
Started Start(const wchar_t* program, const std::wstring& arguments, DWORD flags = 0) {
    const std::wstring folder = ServerDirectory();
    const bool isWholePath = std::wstring_view(program).find(L':') != std::wstring_view::npos;
    std::wstring commandLine = L'"' + (isWholePath ? L"" : folder.substr(0, folder.find_last_of(L'\\') + 1)) +
                               program + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr,
                        &startup, &process)) {
        throw std::runtime_error("error " + std::to_string(GetLastError()) +
                                 ", not started: " + ToAnsi(commandLine));
    }
    return {FileHandle(process.hProcess), FileHandle(process.hThread)};
}

}  // namespace

bool LoadLibraryInto(HANDLE process, const std::wstring& path) {
    const size_t size = (path.size() + 1) * sizeof(wchar_t);
    void* const text = VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
    if (!WriteProcessMemory(process, text, path.c_str(), size, nullptr)) return false;
    const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW")));
    const FileHandle thread(CreateRemoteThread(process, nullptr, 0, load, text, 0, nullptr));
    WaitForSingleObject(thread.Get(), kStartPatience);
    DWORD module = 0;
    GetExitCodeThread(thread.Get(), &module);
    VirtualFreeEx(process, text, 0, MEM_RELEASE);
    return module != 0 && module != STILL_ACTIVE;
}

DWORD RunProgram(const wchar_t* program, const std::wstring& arguments, DWORD milliseconds) {
    const Started started = Start(program, arguments);
    PumpUntil([&] { return WaitForSingleObject(started.process.Get(), 0) == WAIT_OBJECT_0; }, milliseconds);
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(started.process.Get(), &code);
    return code;
}

void StartServerAhead(const wchar_t* program) {
    if (!ProcessesOf(program).empty()) return;
    WaitForInputIdle(Start(program, L"-Embedding").process.Get(), kStartPatience);
}

HANDLE StartServerWith(const wchar_t* program, const std::wstring& library) {
    Started started = Start(program, L"-Embedding", CREATE_SUSPENDED);
    const bool isLoaded = LoadLibraryInto(started.process.Get(), library);
    if (!isLoaded) TerminateProcess(started.process.Get(), 1);
    ResumeThread(started.thread.Get());
    WaitForInputIdle(started.process.Get(), kStartPatience);
    if (!isLoaded) throw std::runtime_error("not loaded: " + ToAnsi(library));
    return started.process.Detach();
}
