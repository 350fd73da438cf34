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
