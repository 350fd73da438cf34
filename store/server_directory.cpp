#include "store/server_directory.h"

#include "platform/executable_path.h"

std::wstring ServerDirectory() {
    std::wstring path = ExecutablePath();
    const size_t separator = path.find_last_of(L'\\');
    if (separator == std::wstring::npos) return path;
    // "C:\server.exe" lies in "C:\": the root keeps its separator.
    const bool isRoot = separator == 2 && path[1] == L':';
    path.resize(isRoot ? separator + 1 : separator);
    return path;
}
