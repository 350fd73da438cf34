// One suite of the kit.
#pragma once

#include <string>
#include <vector>

// A line of suites.txt: "NAME SECONDS", or "NAME - why it is not in the kit".
struct Suite {
    std::string name;
    unsigned long seconds = 0;
    std::string leftOut;
};

std::vector<Suite> ReadSuites(const std::wstring& path);

struct Outcome {
    long passed = 0;
    long failed = 0;
    std::vector<std::string> skipped;  // "test case: reason"
    std::string note;                  // of a suite that did not end by itself
    std::string output;
};

// Runs the suite beside this program, for its seconds at most. Its output is kept in folder.
Outcome Run(const Suite& suite, const std::wstring& folder);
