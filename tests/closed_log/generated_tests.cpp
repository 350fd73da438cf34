// Inputs put together by chance, and every short one: what the program makes of them is what the plain way
// makes.
#include <doctest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "tests/fuzz/targets.h"

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

// A log as an engine writes it: lines out of a stock, some of them long.
std::string RandomLog(Random& random) {
    std::vector<std::string> stock(1 + Below(random, 40));
    for (std::string& line : stock) {
        const size_t longest = Below(random, 8) == 0 ? 300 : 12;
        line = "http://site" + std::to_string(Below(random, 20)) + std::string(Below(random, longest), 'x');
    }
    std::string log;
    for (size_t count = Below(random, 200); count != 0; --count)
        log += stock[Below(random, stock.size())] + (Below(random, 4) == 0 ? "\n" : "\r\n");
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

// The size of the blocks, from 1, the number of lines wanted and whether some are taken for equal, before a
// log.
bool LogAgrees(size_t blockSize, size_t limit, bool folds, const std::string& log) {
    const auto wanted = static_cast<char>(limit + (folds ? 150 : 0));
    return Agrees(NewestLinesAgree, std::string{static_cast<char>(blockSize - 1), wanted} + log);
}

}  // namespace

TEST_CASE(
    "thousands of generated logs read from the end give what reading from the beginning gives, also where "
    "different lines are the same text") {
    Random random = NewRandom();
    for (int n = 0; n < 4000; ++n) {
        const std::string log = n % 2 == 0 ? RandomBytes(random, Below(random, 200)) : RandomLog(random);
        const size_t limit = Below(random, 4) == 0 ? Below(random, 4) : 25;
        CAPTURE(n);
        REQUIRE(LogAgrees(1 + Below(random, 67), limit, n % 4 == 0, log));
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
                REQUIRE(LogAgrees(static_cast<size_t>(blockSize), 25, false, log));
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
