#include <doctest.h>

#include <algorithm>
#include <cstring>
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
constexpr size_t kBlockSizes[] = {1, 2, 3, 4, 5, 7, 8, 16, 61, 64, 100, 1000, kLogBlockSize};

}  // namespace

TEST_CASE("thirty lines leave the newest twenty-five, the newest first") {
    std::string log;
    for (int i = 1; i <= 30; ++i)
        log += "line " + std::to_string(i) + "\r\n";
    const Rows rows = Newest(log);
    REQUIRE(rows.size() == 25);
    for (int i = 0; i < 25; ++i)
        CHECK(rows[static_cast<size_t>(i)] == "line " + std::to_string(30 - i));
    CHECK(Newest(log, 0).empty());
}

TEST_CASE("a line is what stands before an LF or a CR LF, and two lines are equal byte by byte") {
    const std::tuple<const char*, std::string, Rows> rows[] = {
        {"an empty log has no lines", "", {}},
        {"a line end at the end begins none", "A", {"A"}},
        {"nor an LF", "A\n", {"A"}},
        {"nor a CR LF", "A\r\n", {"A"}},
        {"a repeated line stands at its latest place", "A\r\nB\r\nA\r\n", {"A", "B"}},
        {"also among others that repeat", "A\nB\nB\nC\nB\nC\nC\n", {"C", "B", "A"}},
        {"case, blanks and length tell lines apart", "a\nA\na \n a\naa\n", {"aa", " a", "a ", "A", "a"}},
        {"an empty line is an entry", "\n", {""}},
        {"all of them one", "\r\n\n\r\n", {""}},
        {"at its latest place", "\nA\n\n", {"", "A"}},
        {"or before the others", "\n\nA", {"A", ""}},
        {"a CR belongs to the line end only before an LF", "a\rb\r\nc\r", {"c\r", "a\rb"}},
        {"and directly before it", "a\r\r\nb\n\rc\n\n\r\n", {"", "\rc", "b", "a\r"}},
        {"a CR alone is a line", "\r", {"\r"}},
        {"behind an empty one too", "\r\n\r", {"\r", ""}},
        {"an unfinished line with a CR is not the one before it", "abc\r\nabc\r", {"abc\r", "abc"}},
        {"nor the two before it", "abc\r\nabc\r\nabc\r", {"abc\r", "abc"}},
        {"nor one that ends with a CR", "abc\r\r\nabc\r\nabc\r", {"abc\r", "abc"}},
        {"NULs, control characters and bytes beyond ASCII belong to the line",
         "a\0b\na\0c\n\x1a\n\xE9\n\xFF\xFE\n"s,
         {"\xFF\xFE"s, "\xE9", "\x1a", "a\0c"s, "a\0b"s}},
    };
    for (const auto& [meaning, log, lines] : rows) {
        CAPTURE(meaning);
        CHECK(Newest(log) == lines);
    }
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

TEST_CASE("reading stops as soon as the list is full") {
    std::string bytes;
    for (int i = 0; i < 100000; ++i)
        bytes += "http://site/" + std::to_string(i) + "\r\n";
    TextLog log(bytes);
    int offered = 0;
    ReadNewestLines(
        bytes.size(), log.Reader(), [&](std::string_view) { return ++offered > 0; }, kLimit, kLogBlockSize);
    CHECK(offered == 25);
    CHECK(log.bytesRead == kLogBlockSize);
}

TEST_CASE("a log of one repeated line is read once, in blocks, and offered once") {
    const std::string line = "http://www.example.com/popup.htm\r\n";
    std::string bytes;
    for (int i = 0; i < 50000; ++i)
        bytes += line;
    TextLog log(bytes);
    int offered = 0;
    ReadNewestLines(
        bytes.size(), log.Reader(), [&](std::string_view) { return ++offered > 0; }, kLimit, kLogBlockSize);
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
    ReadNewestLines(log.bytes.size(), log.Reader(), keep, kLimit, kLogBlockSize);
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
    CHECK_THROWS_AS(ReadNewestLines(4, log.Reader(), keep, kLimit, kLogBlockSize), std::runtime_error);
}
