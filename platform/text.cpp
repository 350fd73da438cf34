#include "platform/text.h"

#include <windows.h>

std::string ToAnsi(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string ansi(static_cast<size_t>(
                         WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
                     '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, ansi.data(), static_cast<int>(ansi.size()), nullptr,
                        nullptr);
    return ansi;
}

std::wstring FromAnsi(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)),
                      L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::wstring UpperCase(std::wstring_view text) {
    std::wstring upper(text);
    MakeUpperCase(upper);
    return upper;
}

void MakeUpperCase(std::wstring& text) noexcept {
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
}

std::wstring ServerPath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::wstring ServerDirectory() {
    std::wstring path = ServerPath();
    const size_t separator = path.find_last_of(L'\\');
    if (separator == std::wstring::npos) return path;
    // "C:\server.exe" lies in "C:\": the root keeps its separator.
    const bool isRoot = separator == 2 && path[1] == L':';
    path.resize(isRoot ? separator + 1 : separator);
    return path;
}
