// A log file of a test's own.
#pragma once

#include <doctest.h>

#include <windows.h>

#include <string>

#include "platform/handle.h"

inline std::string FileBytes(const std::wstring& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    REQUIRE(static_cast<bool>(file));
    std::string bytes(4096, '\0');
    DWORD size = 0;
    REQUIRE(ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr));
    bytes.resize(size);
    return bytes;
}

// A path in the temporary folder at which no file lies, before and after.
struct TemporaryPath {
    TemporaryPath() {
        wchar_t folder[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, folder);
        path = std::wstring(folder) + L"standin_tests.log";
        DeleteFileW(path.c_str());
    }
    ~TemporaryPath() { DeleteFileW(path.c_str()); }

    std::wstring path;
};
