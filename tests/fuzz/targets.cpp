#include "tests/fuzz/targets.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "lists/newest_lines.h"
#include "lists/site_of_address.h"
#include "tests/support/plain_log.h"

bool NewestLinesAgree(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return true;
    const std::size_t blockSize = 1 + data[0] % 67;
    const std::size_t limit = data[1] % 30;
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
            lines.emplace_back(line);
            return true;
        },
        limit, blockSize);
    return isInBounds && lines == PlainNewestLines(log, limit);
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
