// Test cases that end their process, or what would be its end: each runs in a process of its own.
#pragma once

#include <doctest.h>

#include <string>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/entry/inside.h"
#include "tests/support/program.h"

inline TIMERPROC endProcess = nullptr;
inline UINT endDelay = 0;
inline bool timersFail = false;
inline int exits = 0;

inline UINT_PTR WINAPI TakeTimer(HWND window, UINT_PTR, UINT delay, TIMERPROC procedure) {
    if (timersFail) return 0;
    CHECK(window == nullptr);
    endProcess = procedure;
    endDelay = delay;
    return 1;
}

struct Exit {};

[[noreturn]] inline void WINAPI TakeExit(UINT code) {
    CHECK(code == 0);
    ++exits;
    throw Exit();
}

inline constexpr wchar_t kRanEvent[] = L"CalvaneEndingTestRan";

// Ends nothing, but notes that the process would have ended. Tells the process that started this one that a
// case has begun: a filter that matches none would pass as well.
struct NotedEnd {
    NotedEnd() { SetEvent(FileHandle(OpenEventW(EVENT_MODIFY_STATE, FALSE, kRanEvent)).Get()); }

    ImportPatch timer{"user32.dll", "SetTimer", &TakeTimer};
    ImportPatch exit{"kernel32.dll", "ExitProcess", &TakeExit};
};

// Runs a case of this suite in a process of its own.
inline void CheckInOwnProcess(const std::wstring& name, const std::wstring& subcase = L"*") {
    CAPTURE(ToAnsi(subcase));
    const FileHandle ran(CreateEventW(nullptr, TRUE, FALSE, kRanEvent));
    CHECK(RunProgram(L"tests\\entry_tests.exe", L"--no-skip --minimal \"--test-case=" + name +
                                                    L"\" \"--subcase=" + subcase + L"\"") == 0);
    CHECK(WaitForSingleObject(ran.Get(), 0) == WAIT_OBJECT_0);
}
