// Inputs put together by chance, and every short one: what the program makes of them is what the plain way
// makes.
#include <doctest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>

#include "lists/newest_lines.h"
#include "tests/fuzz/targets.h"
#include "tests/support/plain_log.h"
#include "tests/support/shown_text.h"

namespace {

using Random = std::mt19937;

size_t Below(Random& random, size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
}

std::string RandomBytes(Random& random, size_t size) {
    static constexpr std::string_view kAlphabet{"abA\r\n\0\xE9\n", 8};
    std::string bytes;
    for (size_t i = 0; i < size; ++i)
        bytes += kAlphabet[Below(random, kAlphabet.size())];
    return bytes;
}

// A log as an engine writes it: lines out of a stock, some of them often in a row, some of them long.
std::string RandomLog(Random& random) {
    std::vector<std::string> stock(1 + Below(random, 40));
    for (std::string& line : stock) {
        const size_t longest = Below(random, 8) == 0 ? 300 : 12;
        line = Below(random, 20) == 0 ? RandomBytes(random, Below(random, 6))
                                      : "http://site" + std::to_string(Below(random, 20)) +
                                            std::string(Below(random, longest), 'x');
    }
    std::string log;
    for (size_t count = Below(random, 120); count != 0; --count) {
        const std::string line = stock[Below(random, stock.size())] + (Below(random, 4) == 0 ? "\n" : "\r\n");
        for (size_t repeats = Below(random, 6) == 0 ? 1 + Below(random, 9) : 1; repeats != 0; --repeats)
            log += line;
    }
    if (Below(random, 3) == 0) log += stock.front();
    if (Below(random, 10) == 0) log += '\r';
    return log;
}

// A generator whose seed a failed test shows.
Random NewRandom() {
    const auto seed = static_cast<unsigned>(std::chrono::steady_clock::now().time_since_epoch().count());
    MESSAGE("seed " << seed);
    return Random(seed);
}

bool Agrees(bool (*target)(const std::uint8_t*, std::size_t), const std::string& input) {
    return target(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// The size of the blocks, from 1, and the number of lines wanted, before a log.
bool LogAgrees(size_t blockSize, size_t limit, const std::string& log) {
    return Agrees(NewestLinesAgree,
                  std::string{static_cast<char>(blockSize - 1), static_cast<char>(limit)} + log);
}

}  // namespace

TEST_CASE("thousands of generated logs read from the end give what reading from the beginning gives") {
    Random random = NewRandom();
    for (int n = 0; n < 3000; ++n) {
        const std::string log = n % 3 == 0 ? RandomBytes(random, Below(random, 200)) : RandomLog(random);
        const size_t limit = Below(random, 4) == 0 ? Below(random, 4) : 25;
        CAPTURE(n);
        REQUIRE(LogAgrees(1 + Below(random, 67), limit, log));
    }
}

TEST_CASE("every short log of the bytes that matter is read as from the beginning") {
    constexpr char kAlphabet[] = {'a', '\r', '\n'};
    for (size_t size = 0, count = 1; size <= 8; ++size, count *= 3) {
        for (size_t number = 0; number < count; ++number) {
            std::string log;
            for (size_t i = 0, rest = number; i < size; ++i, rest /= 3)
                log += kAlphabet[rest % 3];
            for (const size_t blockSize : {1, 2, 3, 67})
                REQUIRE(LogAgrees(static_cast<size_t>(blockSize), 25, log));
        }
    }
}

TEST_CASE("generated addresses and values of the registry come to what the plain way comes to") {
    Random random = NewRandom();
    for (int n = 0; n < 20000; ++n) {
        std::string address;
        for (size_t count = Below(random, 14); count != 0; --count)
            address += std::string{"/:a"[Below(random, 3)], '\0'};
        std::string value(Below(random, 9), '\0');
        for (char& each : value)
            each = static_cast<char>(Below(random, 3) == 0 ? 0 : random());
        CAPTURE(n);
        REQUIRE(Agrees(SiteAgrees, address));
        REQUIRE(Agrees(ByteOrderAgrees, value));
    }
}

// Different bytes can be the same text in the ANSI code page.
TEST_CASE("lines that their keeper takes for equal are kept once, as reading from the beginning keeps them") {
    const auto fold = [](const std::string& line) {
        std::string text = line;
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c == 'b' || c == 'A' ? 'a' : c; });
        return text;
    };
    Random random = NewRandom();
    for (int n = 0; n < 1000; ++n) {
        const std::string log = RandomBytes(random, Below(random, 200));
        std::vector<std::string> rows;
        ReadNewestLines(
            log.size(),
            [&](std::uint64_t offset, char* buffer, size_t size) {
                std::memcpy(buffer, &log[static_cast<size_t>(offset)], size);
            },
            [&](std::string_view line) {
                const std::string text = fold(std::string(line));
                if (std::find(rows.begin(), rows.end(), text) != rows.end()) return false;
                rows.push_back(text);
                return true;
            },
            25, 1 + Below(random, 9));
        CAPTURE(n);
        REQUIRE(rows == PlainNewestLines(log, 25, fold));
    }
}
