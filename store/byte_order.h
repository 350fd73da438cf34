// Numbers and texts as the bytes that the registry holds of them. Needs no Windows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The four bytes of number.
std::string BytesLowestFirst(std::uint32_t number);
std::string BytesHighestFirst(std::uint32_t number);

// The first four bytes as a number; nothing where there are fewer.
std::optional<std::uint32_t> NumberLowestFirst(std::string_view bytes) noexcept;
std::optional<std::uint32_t> NumberHighestFirst(std::string_view bytes) noexcept;

// The text up to its first NUL.
constexpr std::wstring_view UpToNul(std::wstring_view text) noexcept {
    return text.substr(0, text.find(L'\0'));
}
