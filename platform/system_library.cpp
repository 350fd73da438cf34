#include "platform/system_library.h"

#include <string>

HMODULE LoadSystemLibrary(const wchar_t* name) {
    const HMODULE library = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library != nullptr || GetLastError() != ERROR_INVALID_PARAMETER) return library;

    // Windows 7 without its update KB2533623 refuses the flag. By its full path, and with what it imports
    // looked for beside it, the library is found as safely.
    wchar_t folder[MAX_PATH];
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    const std::wstring path = std::wstring(folder) + L'\\' + name;
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}
