#include "tests/fuzz/targets.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "lists/newest_lines.h"
#include "lists/site_of_address.h"
#include "store/byte_order.h"
#include "tests/support/plain_log.h"

bool NewestLinesAgree(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return true;
    const std::size_t blockSize = 1 + data[0] % 67;
    const std::size_t limit = data[1] % 30;
    // Different bytes can be the same text in the ANSI code page.
    const bool folds = data[1] >= 128;
    const auto textOf = [folds](std::string line) {
        std::replace_if(
            line.begin(), line.end(), [folds](char c) { return folds && (c == 'b' || c == 'A'); }, 'a');
        return line;
    };
    const std::string log(reinterpret_cast<const char*>(data) + 2, size - 2);

    bool isInBounds = true;
    std::vector<std::string> lines;
    ReadNewestLines(
        log.size(),
        [&](std::uint64_t offset, char* buffer, std::size_t count) {
            isInBounds = isInBounds && count <= blockSize && offset + count <= log.size();
            if (isInBounds) std::memcpy(buffer, log.data() + offset, count);
        },
        [&](std::string_view line) {
            const std::string text = textOf(std::string(line));
            if (folds && std::find(lines.begin(), lines.end(), text) != lines.end()) return false;
            lines.push_back(text);
            return true;
        },
        limit, blockSize);
    return isInBounds && lines == PlainNewestLines(log, limit, textOf);
}

bool SiteAgrees(const std::uint8_t* data, std::size_t size) {
    std::wstring address;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        address += static_cast<wchar_t>(data[i] | data[i + 1] << 8);
    std::wstring site;
    for (std::size_t i = 0; i < address.size() && (i < 7 || address[i] != L'/'); ++i)
        site += address[i];
    return SiteOfAddress(address) == site;
}

bool ByteOrderAgrees(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::optional<std::uint32_t> lowestFirst = NumberLowestFirst(bytes);
    const std::optional<std::uint32_t> highestFirst = NumberHighestFirst(bytes);
    const bool isNumber = size >= 4;
    bool agrees = lowestFirst.has_value() == isNumber && highestFirst.has_value() == isNumber;
    if (agrees && isNumber) {
        const std::string number = bytes.substr(0, 4);
        const std::string mirrored(number.rbegin(), number.rend());
        agrees = *lowestFirst == data[0] + data[1] * 0x100u + data[2] * 0x10000u + data[3] * 0x1000000u &&
                 BytesLowestFirst(*lowestFirst) == number && BytesHighestFirst(*highestFirst) == number &&
                 BytesHighestFirst(*lowestFirst) == mirrored && BytesLowestFirst(*highestFirst) == mirrored &&
                 NumberHighestFirst(mirrored) == lowestFirst && NumberLowestFirst(mirrored) == highestFirst;
    }

    const std::wstring text(data, data + size);
    const std::wstring_view upToNul = UpToNul(text);
    std::size_t length = 0;
    while (length < size && data[length] != 0)
        ++length;
    return agrees && upToNul.data() == text.data() && upToNul.size() == length;
}
