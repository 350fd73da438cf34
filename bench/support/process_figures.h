// What a process takes from the machine.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>

struct ProcessFigures {
    std::uint64_t cpu = 0;                          // milliseconds, user and system
    std::uint64_t memory = 0;                       // KB that are its own
    std::map<std::wstring, std::uint64_t> wakeUps;  // how often each thread went on after a wait
};

// How often threads went on after a wait between two moments; the end of a thread counts as one.
std::uint64_t WakeUpsBetween(const ProcessFigures& before, const ProcessFigures& after);

// Of the one process that runs this program, which lies in folder (without a trailing separator), from the
// process files of the kernel below Wine. Throws std::runtime_error when no process, or more than one, runs
// it.
ProcessFigures FiguresOf(const wchar_t* folder, const wchar_t* program);
