// Text between UTF-16, in which the program thinks, and the ANSI code page, in which it calls some of
// Windows.
#pragma once

#include <string>
#include <string_view>

// Characters without a counterpart in the system's ANSI code page become its default character. NULs are
// kept.
std::string ToAnsi(std::wstring_view text);
std::wstring FromAnsi(std::string_view text);

// Upper case by the user's locale, character by character; the length stays.
std::wstring UpperCase(std::wstring_view text);
void MakeUpperCase(std::wstring& text) noexcept;
