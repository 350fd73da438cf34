#include "tests/kill_sweep/child.h"

#include <stdexcept>

#include "platform/text.h"
#include "tests/kill_sweep/subjects.h"
#include "tests/support/message_pump.h"

namespace {

constexpr wchar_t kCallVariable[] = L"KILL_SWEEP_CALL";

}  // namespace

Child::Child(const std::string& testCase, long call) {
    SetEnvironmentVariableW(kCallVariable, std::to_wstring(call).c_str());
    wchar_t program[MAX_PATH]{};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command =
        L'"' + std::wstring(program) + L"\" --no-skip --out=NUL --test-case=\"" + FromAnsi(testCase) + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr,
                        &startup, &process)) {
        throw std::runtime_error("the child was not started");
    }
    CloseHandle(process.hThread);
    m_process.Reset(process.hProcess);
    m_id = process.dwProcessId;
}

DWORD Child::Wait() {
    if (WaitForSingleObject(m_process.Get(), kPatience) != WAIT_OBJECT_0) {
        TerminateProcess(m_process.Get(), 1);
        return WAIT_TIMEOUT;
    }
    DWORD code = 0;
    GetExitCodeProcess(m_process.Get(), &code);
    return code;
}

RegistryContents Child::TakeStore(HKEY realSoftware) const {
    RegistryContents contents;
    for (const auto& [suffix, root] : {std::pair(L"U", "HKCU"), std::pair(L"M", "HKLM")}) {
        const std::wstring path = L"CalvaneTests\\" + std::to_wstring(m_id) + suffix;
        HKEY key = nullptr;
        if (RegOpenKeyExW(realSoftware, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        {
            const RegistryKey owner(key);
            Walk(key, root, contents);
        }
        RegDeleteTreeW(realSoftware, path.c_str());
    }
    return contents;
}

long CallToEndAt() {
    wchar_t text[16]{};
    GetEnvironmentVariableW(kCallVariable, text, 16);
    return std::stol(text);
}
