// How much of a log is read. What is made of it, the generated logs' subject, is what reading from the
// beginning makes.
#include <doctest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "lists/newest_lines.h"
#include "tests/support/plain_log.h"
#include "tests/support/shown_text.h"

TEST_CASE("a log is read in blocks, each byte once, and no further than until the list is full") {
    constexpr size_t kLimit = 25;
    std::string distinct;
    for (int i = 0; i < 10000; ++i)
        distinct += "http://site/" + std::to_string(i) + "\r\n";
    std::string repeated;
    for (int i = 0; i < 50000; ++i)
        repeated += "http://www.example.com/popup.htm\r\n";
    const std::string huge = "first\r\n" + std::string(20 << 20, 'y') + "\r\nlast\r\n";
    const std::tuple<std::string, std::string, size_t, size_t> rows[] = {
        {"lines that fill the list", distinct, 25, kLogBlockSize},
        {"one repeated line", repeated, 1, repeated.size()},
        {"a line of many megabytes", huge, 3, huge.size()},
    };
    for (const auto& [what, log, offered, asked] : rows) {
        CAPTURE(what);
        const std::string& bytes = log;
        std::vector<std::string> lines;
        size_t bytesRead = 0;
        size_t largestRead = 0;
        ReadNewestLines(
            bytes.size(),
            [&](std::uint64_t offset, char* buffer, size_t count) {
                REQUIRE(offset + count <= bytes.size());
                std::memcpy(buffer, bytes.data() + offset, count);
                bytesRead += count;
                largestRead = std::max(largestRead, count);
            },
            [&](std::string_view line) {
                lines.emplace_back(line);
                return true;
            },
            kLimit, kLogBlockSize);
        CHECK((lines == PlainNewestLines(bytes, kLimit)));
        CHECK(lines.size() == offered);
        CHECK(bytesRead == asked);
        CHECK(largestRead == kLogBlockSize);
    }
}
