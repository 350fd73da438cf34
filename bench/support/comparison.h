// Two ways to do the same work, timed by turns in one run, and the ratio of their times.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct Side {
    std::string name;
    std::function<void()> run;
    std::function<void()> prepare = [] {};  // before each run, not timed
    std::function<void()> finish = [] {};   // after each run, not timed
    // Where set, it runs in place of run and returns its own milliseconds: what began and ended elsewhere.
    std::function<double()> time = {};
};

struct Comparison {
    std::string what;
    std::string size;
    Side measured;
    Side beside;
    int rounds = 15;
    double wanted = 0;  // the highest median ratio that is accepted; 0 where none is set
    int repeats = 1;    // runs within one timing, for work that is too short for the clock
    int warmUps = 1;    // rounds before, which are not counted
    // The highest median difference that is accepted, in milliseconds, in place of a ratio; 0 where none is
    // set.
    double wantedAbove = 0;
};

// Milliseconds of one run.
struct Times {
    double measured;
    double beside;
};

// Runs both sides to warm up, then by turns, each round in the other order than the one before.
std::vector<Times> Measure(const Comparison& comparison);

// A row of the table: medians of the times, and minimum, median and maximum of the rounds' ratios. It goes to
// the standard output.
void Report(const Comparison& comparison);

// A row for two numbers of another unit. wanted: the highest ratio that is accepted; 0 where none is set.
struct Amount {
    std::string name;
    double value;
};
void ReportAmounts(const std::string& what, const std::string& size, const Amount& measured,
                   const Amount& beside, const std::string& unit, double wanted = 0);

// A row for what has nothing beside it. wanted says what was asked for and whether it was reached.
void ReportFigure(const std::string& what, const std::string& size, const std::string& figure,
                  const std::string& wanted = "-");

// "reached", or that it was missed.
std::string Verdict(bool isReached);

// Of a clock that begins anywhere.
double Milliseconds();

// What wmain does: runs body in a COM apartment and returns the process's exit code; an error that leaves
// body goes to the standard error stream.
int RunBenchmark(const std::function<void()>& body);

// The folder for large files: the first argument of the program, with a trailing separator.
std::wstring FolderFor(int count, wchar_t** arguments);
