// What a process takes from the machine.
#pragma once

#include <windows.h>

#include <cstdint>

struct ProcessFigures {
    std::uint64_t cpu = 0;      // milliseconds, user and system
    std::uint64_t wakeUps = 0;  // how often a thread of it went on after a wait
    std::uint64_t memory = 0;   // KB that are its own
};

// Of the one process that runs this program, which lies in folder (without a trailing separator). Under Wine
// they are the kernel's own, from its process files; elsewhere Windows tells them, but not the wake-ups.
// Throws std::runtime_error when no process, or more than one, runs it.
ProcessFigures FiguresOf(const wchar_t* folder, const wchar_t* program);
