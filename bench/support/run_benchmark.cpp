#include "bench/support/run_benchmark.h"

#include <windows.h>
#include <objbase.h>

#include <cstdio>

#include "platform/automation_error.h"

int RunBenchmark(const std::function<void()>& body) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    try {
        body();
        return 0;
    } catch (const AutomationError& error) {
        std::fprintf(stderr, "Automation error 0x%08lX\n", static_cast<unsigned long>(error.Code()));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
