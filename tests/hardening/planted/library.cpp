// A library that leaves a file beside itself when a process loads it.
#include <windows.h>

#include <cwchar>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    wchar_t path[MAX_PATH + 16]{};
    GetModuleFileNameW(instance, path, MAX_PATH);
    std::wcscat(path, L".loaded");
    CloseHandle(CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    return TRUE;
}
