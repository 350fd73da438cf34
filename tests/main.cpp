// The entry of every suite: a single-threaded apartment, common controls, the name of the running test where
// a time-out can find it, and what is not tested here.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>
#include <objbase.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/com/server_process.h"
#include "platform/text.h"
#include "tests/support/crash_watch.h"

namespace {

// What doctest prints, and the name of each test case in the file that the environment variable TEST_CURRENT
// names.
struct CurrentTest : doctest::ConsoleReporter {
    explicit CurrentTest(const doctest::ContextOptions& options) : ConsoleReporter(options) {}

    void test_case_start(const doctest::TestCaseData& test) override {
        ConsoleReporter::test_case_start(test);
        WatchForCrash(0);
        const wchar_t* const path = _wgetenv(L"TEST_CURRENT");
        if (path == nullptr) return;
        if (FILE* const file = _wfopen(path, L"w")) {
            std::fprintf(file, "%s\n", test.m_name);
            std::fclose(file);
        }
    }

    // Those that have a reason not to run here.
    void test_case_skipped(const doctest::TestCaseData& test) override {
        if (test.m_skip && test.m_description != nullptr)
            std::printf("[skipped] %s: %s\n", test.m_name, test.m_description);
    }
};

REGISTER_REPORTER("current", 0, CurrentTest);

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
    // Of the exceptions that the system itself raises, those of the severity "error".
    const bool isFault = (record.ExceptionCode & 0xF0000000) == 0xC0000000;
    if (isFault && IsOwnCode(record.ExceptionAddress)) End(record);
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG CALLBACK Unhandled(EXCEPTION_POINTERS* exception) {
    End(*exception->ExceptionRecord);
}

// A fault in the suite's own code, or a call to no code at all, ends the program at once and names the test
// case. Windows would hand it to the nearest handler first, and that of COM keeps faults in a call to itself:
// the caller would see an error, or wait for ever. Faults in Windows' own code have handlers that expect
// them; those without one end the program likewise.
void EndAtFault() {
    AddVectoredExceptionHandler(1, FirstChance);
    SetUnhandledExceptionFilter(Unhandled);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    EndAtFault();
    // What has been printed is in the log even if the program is ended by force.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i)
        texts.push_back(ToAnsi(arguments[i]));
    std::vector<const char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());

    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const INITCOMMONCONTROLSEX classes{
        sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES | ICC_LINK_CLASS | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    // Objects under test come and go without the last of them ending the program.
    ServerProcess::Lock();

    doctest::Context context(count, pointers.data());
    context.setOption("no-colors", true);
    context.setOption("reporters", "current");
    const int result = context.run();
    std::fflush(nullptr);
    return result;
}
