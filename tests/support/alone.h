// Test cases that end their process, or what would be its end: each runs in a process of its own.
#pragma once

#include <doctest.h>

#include <string>
#include <vector>

#include "platform/handle.h"
#include "tests/support/import_fake.h"

// While it exists the process does not end itself; how often it would have is counted.
class NotedEnd {
public:
    NotedEnd() { s_count = 0; }

    static int Count() { return s_count; }

private:
    static inline int s_count = 0;
    const ImportFake<"TerminateProcess", decltype(&TerminateProcess)> m_end{
        "kernel32.dll", [](HANDLE process, UINT code) {
            CHECK(process == GetCurrentProcess());
            CHECK(code == 0);
            ++s_count;
            return TRUE;
        }};
};

// Starts one of this program's test cases, which is skipped otherwise, in a process of its own.
FileHandle StartAlone(const char* test, const std::string& subcase = "*");

// Runs each subcase in a process of its own, a few at a time, and checks that it passes. Each calls
// NotePassed at its end: a name that matches none would pass as well.
void CheckAlone(const char* test, const std::vector<std::string>& subcases = {"*"});
void NotePassed();
