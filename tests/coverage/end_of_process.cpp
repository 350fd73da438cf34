// Part of the programs in the coverage build alone: the counts are written at the end of a program, which
// these two functions would skip.
#include <windows.h>

extern "C" void __gcov_dump();

namespace {

template <class Function>
Function Kernel(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)));
}

void WINAPI DumpAndExit(UINT code) {
    __gcov_dump();
    Kernel<decltype(&ExitProcess)>("ExitProcess")(code);
}

BOOL WINAPI DumpAndTerminate(HANDLE process, UINT code) {
    __gcov_dump();
    return Kernel<decltype(&TerminateProcess)>("TerminateProcess")(process, code);
}

}  // namespace

// The slots that the programs call through, in the place of those of the import library.
extern "C" {
void* volatile exitSlot asm("__imp__ExitProcess@4") = reinterpret_cast<void*>(&DumpAndExit);
void* volatile terminateSlot asm("__imp__TerminateProcess@8") = reinterpret_cast<void*>(&DumpAndTerminate);
}
