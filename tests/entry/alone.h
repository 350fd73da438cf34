// Test cases that end their process, or what would be its end: each runs in a process of its own.
#pragma once

#include <doctest.h>

#include <string>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/entry/inside.h"
#include "tests/support/program.h"

inline int ends = 0;

inline BOOL WINAPI TakeEnd(HANDLE process, UINT code) {
    CHECK(process == GetCurrentProcess());
    CHECK(code == 0);
    ++ends;
    return TRUE;
}

inline constexpr wchar_t kRanEvent[] = L"CalvaneEndingTestRan";

// Ends nothing, but notes that the process would have ended. Tells the process that started this one that a
// case has begun: a filter that matches none would pass as well.
struct NotedEnd {
    NotedEnd() { SetEvent(FileHandle(OpenEventW(EVENT_MODIFY_STATE, FALSE, kRanEvent)).Get()); }

    ImportPatch end{"kernel32.dll", "TerminateProcess", &TakeEnd};
};

// Runs a case of this suite in a process of its own.
inline void CheckInOwnProcess(const std::wstring& name, const std::wstring& subcase = L"*") {
    CAPTURE(ToAnsi(subcase));
    const FileHandle ran(CreateEventW(nullptr, TRUE, FALSE, kRanEvent));
    CHECK(RunProgram(L"tests\\entry_tests.exe", L"--no-skip --minimal \"--test-case=" + name +
                                                    L"\" \"--subcase=" + subcase + L"\"") == 0);
    CHECK(WaitForSingleObject(ran.Get(), 0) == WAIT_OBJECT_0);
}
