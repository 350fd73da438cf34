#include <doctest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "lists/newest_lines.h"
#include "tests/support/plain_log.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

constexpr size_t kLimit = 25;

// Hands out a text in memory and counts what is asked of it.
struct TextLog {
    explicit TextLog(std::string log) : bytes(std::move(log)) {}

    ReadBytes Reader() {
        return [this](std::uint64_t offset, char* buffer, size_t count) {
            REQUIRE(offset + count <= bytes.size());
            std::memcpy(buffer, bytes.data() + offset, count);
            bytesRead += count;
            largestRead = std::max(largestRead, count);
        };
    }

    const std::string bytes;
    size_t bytesRead = 0;
    size_t largestRead = 0;
};

std::vector<std::string> Newest(const std::string& bytes, size_t limit = kLimit,
                                size_t blockSize = kLogBlockSize) {
    TextLog log(bytes);
    std::vector<std::string> rows;
    const auto keep = [&](std::string_view line) {
        rows.emplace_back(line);
        return true;
    };
    ReadNewestLines(bytes.size(), log.Reader(), keep, limit, blockSize);
    return rows;
}

using Rows = std::vector<std::string>;
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
    std::vector<std::string> stock;
    for (size_t count = 1 + Below(random, 40); count != 0; --count) {
        std::string line = "http://site" + std::to_string(Below(random, 20));
        line.append(Below(random, 8) == 0 ? Below(random, 300) : Below(random, 12), 'x');
        if (Below(random, 20) == 0) line = RandomBytes(random, Below(random, 6));
        stock.push_back(line);
    }
    std::string log;
    for (size_t count = Below(random, 120); count != 0; --count) {
        const std::string& line = stock[Below(random, stock.size())];
        const char* const end = Below(random, 4) == 0 ? "\n" : "\r\n";
        for (size_t repeats = Below(random, 6) == 0 ? 1 + Below(random, 9) : 1; repeats != 0; --repeats)
            log += line + end;
    }
    if (Below(random, 3) == 0) log += stock.front();
    if (Below(random, 10) == 0) log += '\r';
    return log;
}

unsigned NewSeed() {
    return static_cast<unsigned>(std::chrono::steady_clock::now().time_since_epoch().count());
}

constexpr size_t kBlockSizes[] = {1, 2, 3, 4, 5, 7, 8, 16, 61, 64, 100, 1000, kLogBlockSize};

}  // namespace

TEST_CASE("the newest line comes first, and thirty lines leave the newest twenty-five") {
    std::string log;
    for (int i = 1; i <= 30; ++i)
        log += "line " + std::to_string(i) + "\r\n";
    const Rows rows = Newest(log);
    REQUIRE(rows.size() == 25);
    for (int i = 0; i < 25; ++i)
        CHECK(rows[static_cast<size_t>(i)] == "line " + std::to_string(30 - i));
}

TEST_CASE("a repeated line stands at the place of its latest occurrence") {
    CHECK(Newest("A\r\nB\r\nA\r\n") == Rows{"A", "B"});
    CHECK(Newest("A\nB\nB\nC\nB\nC\nC\n") == Rows{"C", "B", "A"});
}

TEST_CASE("lines that differ in letter case, in blanks or in length are different") {
    CHECK(Newest("a\nA\na \n a\naa\n") == Rows{"aa", " a", "a ", "A", "a"});
}

TEST_CASE("an empty log has no lines, and a line end at its end begins none") {
    CHECK(Newest("").empty());
    CHECK(Newest("A") == Rows{"A"});
    CHECK(Newest("A\n") == Rows{"A"});
    CHECK(Newest("A\r\n") == Rows{"A"});
}

TEST_CASE("empty lines are one entry") {
    CHECK(Newest("\n") == Rows{""});
    CHECK(Newest("\r\n\n\r\n") == Rows{""});
    CHECK(Newest("\nA\n\n") == Rows{"", "A"});
    CHECK(Newest("\n\nA") == Rows{"A", ""});
}

TEST_CASE("a CR belongs to the line end only directly before an LF") {
    CHECK(Newest("a\rb\r\nc\r") == Rows{"c\r", "a\rb"});
    CHECK(Newest("a\r\r\nb\n\rc\n\n\r\n") == Rows{"", "\rc", "b", "a\r"});
    CHECK(Newest("\r") == Rows{"\r"});
    CHECK(Newest("\r\n\r") == Rows{"\r", ""});
}

TEST_CASE("an unfinished line that ends with a CR is not the finished line before it") {
    CHECK(Newest("abc\r\nabc\r") == Rows{"abc\r", "abc"});
    CHECK(Newest("abc\r\nabc\r\nabc\r") == Rows{"abc\r", "abc"});
    CHECK(Newest("abc\r\r\nabc\r\nabc\r") == Rows{"abc\r", "abc"});
}

TEST_CASE("NULs, control characters and bytes beyond ASCII belong to the line") {
    CHECK(Newest("a\0b\na\0c\n\x1a\n\xE9\n\xFF\xFE\n"s) ==
          Rows{"\xFF\xFE"s, "\xE9", "\x1a", "a\0c"s, "a\0b"s});
}

TEST_CASE("lines longer than a block are put together, also when they repeat") {
    const std::string longLine(1000, 'x');
    const std::string longerLine(1500, 'x');
    const std::string log =
        longLine + "\r\n" + longerLine + "\r\n" + longLine + "\r\nend\r\n" + longerLine + "\r\n";
    for (const size_t blockSize : kBlockSizes) {
        CAPTURE(blockSize);
        CHECK(Newest(log, kLimit, blockSize) == Rows{longerLine, "end", longLine});
    }
}

TEST_CASE("thousands of generated logs read from the end give what reading from the beginning gives") {
    const unsigned seed = NewSeed();
    MESSAGE("seed " << seed);
    CAPTURE(seed);
    Random random(seed);
    for (int n = 0; n < 6000; ++n) {
        const std::string log = n % 3 == 0 ? RandomBytes(random, Below(random, 200)) : RandomLog(random);
        const size_t blockSize = kBlockSizes[Below(random, std::size(kBlockSizes))];
        const size_t limit = Below(random, 4) == 0 ? Below(random, 4) : kLimit;
        CAPTURE(n);
        CAPTURE(blockSize);
        CAPTURE(limit);
        REQUIRE(Newest(log, limit, blockSize) == PlainNewestLines(log, limit));
    }
}

TEST_CASE("every short log of the bytes that matter is read as from the beginning") {
    static constexpr std::string_view kAlphabet = "a\r\n";
    for (size_t size = 0; size <= 8; ++size) {
        size_t count = 1;
        for (size_t i = 0; i < size; ++i)
            count *= kAlphabet.size();
        for (size_t number = 0; number < count; ++number) {
            std::string log;
            for (size_t i = 0, rest = number; i < size; ++i, rest /= kAlphabet.size())
                log += kAlphabet[rest % kAlphabet.size()];
            const Rows expected = PlainNewestLines(log, kLimit);
            for (const size_t blockSize : {1, 2, 3, 100})
                REQUIRE(Newest(log, kLimit, static_cast<size_t>(blockSize)) == expected);
        }
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
    const unsigned seed = NewSeed();
    MESSAGE("seed " << seed);
    CAPTURE(seed);
    Random random(seed);
    for (int n = 0; n < 2000; ++n) {
        TextLog log(RandomBytes(random, Below(random, 200)));
        Rows rows;
        const auto keep = [&](std::string_view line) {
            const std::string text = fold(std::string(line));
            if (std::find(rows.begin(), rows.end(), text) != rows.end()) return false;
            rows.push_back(text);
            return true;
        };
        ReadNewestLines(log.bytes.size(), log.Reader(), keep, kLimit, 1 + Below(random, 9));
        CAPTURE(n);
        REQUIRE(rows == PlainNewestLines(log.bytes, kLimit, fold));
    }
}

TEST_CASE("reading stops as soon as the list is full") {
    std::string bytes;
    for (int i = 0; i < 100000; ++i)
        bytes += "http://site/" + std::to_string(i) + "\r\n";
    TextLog log(bytes);
    int offered = 0;
    ReadNewestLines(
        bytes.size(), log.Reader(), [&](std::string_view) { return ++offered > 0; }, kLimit);
    CHECK(offered == 25);
    CHECK(log.bytesRead == kLogBlockSize);
}

TEST_CASE("a log of more than four gigabytes is read at its end") {
    constexpr std::uint64_t kSize = 5'000'000'000;
    constexpr std::uint64_t kLine = 10;  // nine digits of the line's number and an LF
    std::uint64_t lowest = kSize;
    const auto read = [&](std::uint64_t offset, char* buffer, size_t count) {
        REQUIRE(offset + count <= kSize);
        lowest = std::min(lowest, offset);
        for (size_t i = 0; i < count; ++i) {
            const std::uint64_t at = offset + i;
            const std::string number = std::to_string(100'000'000 + at / kLine);
            buffer[i] = at % kLine == kLine - 1 ? '\n' : number[static_cast<size_t>(at % kLine)];
        }
    };
    Rows rows;
    const auto keep = [&](std::string_view line) {
        rows.emplace_back(line);
        return true;
    };
    ReadNewestLines(kSize, read, keep, kLimit, 100);
    REQUIRE(rows.size() == 25);
    CHECK(rows.front() == "599999999");
    CHECK(rows.back() == "599999975");
    CHECK(lowest > 4'294'967'296);
}

TEST_CASE("a limit of nothing offers nothing") {
    CHECK(Newest("A\nB\n", 0).empty());
}

TEST_CASE("a log of one repeated line is read once, in blocks, and offered once") {
    const std::string line = "http://www.example.com/popup.htm\r\n";
    std::string bytes;
    for (int i = 0; i < 50000; ++i)
        bytes += line;
    TextLog log(bytes);
    int offered = 0;
    ReadNewestLines(
        bytes.size(), log.Reader(), [&](std::string_view) { return ++offered > 0; }, kLimit);
    CHECK(offered == 1);
    CHECK(log.bytesRead == bytes.size());
    CHECK(log.largestRead == kLogBlockSize);
}

TEST_CASE("a line of many megabytes is read whole, in blocks, each byte once") {
    const std::string line(20 << 20, 'y');
    TextLog log("first\r\n" + line + "\r\nlast\r\n");
    Rows rows;
    const auto keep = [&](std::string_view kept) {
        rows.emplace_back(kept);
        return true;
    };
    ReadNewestLines(log.bytes.size(), log.Reader(), keep, kLimit);
    REQUIRE(rows.size() == 3);
    CHECK(rows[0] == "last");
    CHECK((rows[1] == line));
    CHECK(rows[2] == "first");
    CHECK(log.bytesRead == log.bytes.size());
    CHECK(log.largestRead == kLogBlockSize);
}

TEST_CASE("a failure to read ends the reading after the lines that were complete by then") {
    const std::string bytes = "one\r\ntwo\r\nthree\r\nfour\r\n";
    for (size_t good = 0; good < bytes.size(); ++good) {
        size_t served = 0;
        Rows rows;
        const auto read = [&](std::uint64_t offset, char* buffer, size_t count) {
            if (served == good) throw std::runtime_error("bad sector");
            ++served;
            std::memcpy(buffer, bytes.data() + offset, count);
        };
        const auto keep = [&](std::string_view line) {
            rows.emplace_back(line);
            return true;
        };
        CAPTURE(good);
        CHECK_THROWS_AS(ReadNewestLines(bytes.size(), read, keep, kLimit, 1), std::runtime_error);
        // A line is complete when the LF before it has been read.
        const std::string rest = bytes.substr(bytes.size() - good);
        const size_t feed = rest.find('\n');
        const std::string complete = feed == std::string::npos ? "" : rest.substr(feed + 1);
        CHECK(rows == PlainNewestLines(complete, kLimit));
    }
}

TEST_CASE("what the keeper throws ends the reading") {
    TextLog log("A\nB\n");
    const auto keep = [](std::string_view) -> bool { throw std::runtime_error("full"); };
    CHECK_THROWS_AS(ReadNewestLines(4, log.Reader(), keep, kLimit), std::runtime_error);
}
