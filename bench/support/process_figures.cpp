#include "bench/support/process_figures.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/handle.h"
#include "platform/text.h"

namespace {

constexpr wchar_t kProcessFiles[] = L"Z:\\proc\\";
constexpr std::uint64_t kTickMilliseconds = 10;  // of the kernel's clock for processes

// Such files say that they are empty. The result is empty where there is none.
std::string Contents(const std::wstring& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    std::string bytes;
    char block[4096];
    DWORD count = 0;
    while (file && ReadFile(file.Get(), block, sizeof(block), &count, nullptr) && count != 0)
        bytes.append(block, count);
    return bytes;
}

std::vector<std::wstring> NumbersIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        if (found.cFileName[0] >= L'0' && found.cFileName[0] <= L'9') names.push_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

// The number behind a name in a file of lines.
std::uint64_t Field(const std::string& lines, const char* name) {
    const size_t place = ("\n" + lines).find(std::string("\n") + name);
    return place == std::string::npos
               ? 0
               : std::strtoull(lines.c_str() + place + std::string(name).size(), nullptr, 10);
}

// The 14th and 15th field, the first two of which are the number and the name in parentheses.
std::uint64_t CpuTicks(const std::string& stat) {
    const char* rest = stat.c_str() + stat.rfind(')') + 1;
    for (int field = 3; field < 14; ++field) {
        ++rest;
        while (*rest != ' ' && *rest != '\0')
            ++rest;
    }
    char* end = nullptr;
    const std::uint64_t user = std::strtoull(rest, &end, 10);
    return user + std::strtoull(end, nullptr, 10);
}

ProcessFigures KernelFigures(const std::wstring& process) {
    ProcessFigures figures;
    figures.cpu = CpuTicks(Contents(process + L"stat")) * kTickMilliseconds;
    const std::string memory = Contents(process + L"smaps_rollup");
    figures.memory = Field(memory, "Private_Clean:") + Field(memory, "Private_Dirty:");
    for (const std::wstring& task : NumbersIn(process + L"task\\"))
        figures.wakeUps[task] =
            Field(Contents(process + L"task\\" + task + L"\\status"), "voluntary_ctxt_switches:");
    return figures;
}

}  // namespace

std::uint64_t WakeUpsBetween(const ProcessFigures& before, const ProcessFigures& after) {
    std::uint64_t sum = 0;
    for (const auto& [thread, count] : after.wakeUps) {
        const auto earlier = before.wakeUps.find(thread);
        sum += earlier == before.wakeUps.end() ? count : count - earlier->second;
    }
    for (const auto& [thread, count] : before.wakeUps) {
        if (!after.wakeUps.contains(thread)) ++sum;
    }
    return sum;
}

ProcessFigures FiguresOf(const wchar_t* folder, const wchar_t* program) {
    const std::wstring path = UpperCase(std::wstring(folder) + L"\\" + program);
    std::vector<std::wstring> found;
    for (const std::wstring& process : NumbersIn(kProcessFiles)) {
        const std::string commandLine = Contents(kProcessFiles + process + L"\\cmdline");
        const std::wstring command = UpperCase(FromAnsi(commandLine.substr(0, commandLine.find('\0'))));
        if (command.find(path) != std::wstring::npos) found.push_back(kProcessFiles + process + L"\\");
    }
    if (found.size() != 1) throw std::runtime_error("not one process of the program");
    return KernelFigures(found[0]);
}
