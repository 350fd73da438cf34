// Clients written in script languages, run by the scripting host.
#include <doctest.h>

#include <windows.h>

#include <stdexcept>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
#include "tests/support/test_folder.h"
#include "tests/window/test_manager.h"

namespace {

// Runs a script to its end; returns its exit code, and what it wrote. A server that the script's process
// starts inherits its output, so that this must be a file.
DWORD RunScript(const std::wstring& name, std::string& output) {
    const TestFolder folder;
    const std::wstring outputPath = folder.Path(L"output.txt");
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    FileHandle file(CreateFileW(outputPath.c_str(), GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::wstring commandLine = L"cscript.exe //nologo \"" + DataFile(L"tests\\scripts\\" + name) + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = file.Get();
    startup.hStdError = file.Get();
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &started)) {
        throw std::runtime_error("the scripting host cannot be started");
    }
    CloseHandle(started.hThread);
    const ProcessHandle process(started.hProcess);
    PumpUntil([&] { return WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0; });
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process.Get(), &code);
    if (code == STILL_ACTIVE) TerminateProcess(process.Get(), 1);
    file.Reset();
    output = BytesOf(outputPath);
    return code;
}

}  // namespace

TEST_CASE("clients in script languages reach the manager, share it and end it") {
    RunningEngine();
    for (const wchar_t* const script : {L"two_clients.vbs", L"two_clients.js"}) {
        CAPTURE(ToAnsi(script));
        DeleteSettings();
        std::string output;
        const DWORD code = RunScript(script, output);
        CAPTURE(output);
        CHECK(code == 0);
        CHECK(output.empty());
        const bool hasEnded = ProgramEnds(L"SentrelConfig.exe");
        CHECK(hasEnded);
        // The next script needs a manager of its own.
        if (!hasEnded) const Manager left(true);
    }
}
