#include <doctest.h>

#include <cstdio>

#include "tests/support/crash_watch.h"

namespace {

// Of the exceptions that the system itself raises, those of the severity "error".
bool IsFault(DWORD code) {
    return (code & 0xF0000000) == 0xC0000000;
}

bool IsOwnCode(const void* address) {
    MEMORY_BASIC_INFORMATION region{};
    VirtualQuery(address, &region, sizeof(region));
    return region.Type != MEM_IMAGE || region.AllocationBase == GetModuleHandleW(nullptr);
}

[[noreturn]] void End(const EXCEPTION_RECORD& fault) {
    const doctest::TestCaseData* const test = doctest::getContextOptions()->currentTest;
    char text[512];
    const int length = std::snprintf(
        text, sizeof(text), "CRASHED with exception %08lX at %p, %p from the start of the program, in: %s\n",
        fault.ExceptionCode, fault.ExceptionAddress,
        static_cast<void*>(static_cast<char*>(fault.ExceptionAddress) -
                           reinterpret_cast<ULONG_PTR>(GetModuleHandleW(nullptr))),
        test != nullptr ? test->m_name : "no test case");
    std::fflush(stdout);
    DWORD written;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(length), &written, nullptr);
    TerminateProcess(GetCurrentProcess(), 3);
    for (;;) {
    }
}

LONG CALLBACK FirstChance(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (IsFault(record.ExceptionCode) && IsOwnCode(record.ExceptionAddress)) End(record);
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG CALLBACK Unhandled(EXCEPTION_POINTERS* exception) {
    End(*exception->ExceptionRecord);
}

}  // namespace

void EndAtFault() {
    AddVectoredExceptionHandler(1, FirstChance);
    SetUnhandledExceptionFilter(Unhandled);
}
