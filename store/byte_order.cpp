#include "store/byte_order.h"

#include <algorithm>

namespace {

constexpr std::size_t kNumberSize = sizeof(std::uint32_t);

}  // namespace

std::string BytesLowestFirst(std::uint32_t number) {
    return {static_cast<char>(number), static_cast<char>(number >> 8), static_cast<char>(number >> 16),
            static_cast<char>(number >> 24)};
}

std::string BytesHighestFirst(std::uint32_t number) {
    std::string bytes = BytesLowestFirst(number);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

std::optional<std::uint32_t> NumberLowestFirst(std::string_view bytes) noexcept {
    if (bytes.size() < kNumberSize) return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = kNumberSize; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
}

std::optional<std::uint32_t> NumberHighestFirst(std::string_view bytes) noexcept {
    if (bytes.size() < kNumberSize) return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < kNumberSize; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
}
