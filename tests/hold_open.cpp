// hold_open FILE: keeps a file open for reading, as a virus scanner or a backup may, until it is ended.
// Others may read the file meanwhile, and neither write nor rename it.
#include <windows.h>

#include <cstdio>

int wmain(int count, wchar_t** arguments) {
    if (count != 2) return 2;
    const HANDLE file =
        CreateFileW(arguments[1], GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 1;
    std::puts("held");
    std::fflush(stdout);
    Sleep(INFINITE);
    return 0;
}
