#include "tests/support/alone.h"

#include <cstdio>

#include "platform/executable_path.h"
#include "platform/text.h"

constexpr wchar_t kPassed[] = L"CalvaneAlonePassed";

FileHandle StartAlone(const char* test, const std::string& subcase) {
    std::wstring line = L'"' + ExecutablePath() + L"\" --no-skip --minimal \"--test-case=" + FromAnsi(test) +
                        L"\" \"--subcase=" + FromAnsi(subcase) + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    REQUIRE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                           &process));
    CloseHandle(process.hThread);
    return FileHandle(process.hProcess);
}

void CheckAlone(const char* test, const std::vector<std::string>& subcases) {
    constexpr LONG kMostProcesses = 1000;
    constexpr size_t kAtATime = 4;
    constexpr DWORD kPatienceForOne = 60000;  // milliseconds
    const FileHandle passed(CreateSemaphoreW(nullptr, 0, kMostProcesses, kPassed));
    std::vector<FileHandle> running;
    const auto wait = [&](size_t most) {
        while (running.size() > most) {
            DWORD code = STILL_ACTIVE;
            CHECK(WaitForSingleObject(running.front().Get(), kPatienceForOne) == WAIT_OBJECT_0);
            GetExitCodeProcess(running.front().Get(), &code);
            CHECK(code == 0);
            running.erase(running.begin());
        }
    };
    for (const std::string& subcase : subcases) {
        wait(kAtATime - 1);
        running.push_back(StartAlone(test, subcase));
    }
    wait(0);
    size_t count = 0;
    while (WaitForSingleObject(passed.Get(), 0) == WAIT_OBJECT_0)
        ++count;
    std::printf("%s: %u in processes of their own, %u passed\n", test, static_cast<unsigned>(subcases.size()),
                static_cast<unsigned>(count));
    CHECK(count == subcases.size());
}

void NotePassed() {
    const FileHandle passed(OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, kPassed));
    ReleaseSemaphore(passed.Get(), 1, nullptr);
}
