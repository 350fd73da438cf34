// What every benchmark's process does around its work.
#pragma once

#include <functional>

// Runs body in a COM apartment and returns the process's exit code; an error that leaves body goes to the
// standard error stream.
int RunBenchmark(const std::function<void()>& body);
