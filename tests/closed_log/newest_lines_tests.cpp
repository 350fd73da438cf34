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

using Rows = std::vector<std::string>;

// A text in memory, which counts what is asked of it.
struct TextLog {
    Rows Read(size_t limit = kLimit) {
        Rows rows;
        const auto read = [this](std::uint64_t offset, char* buffer, size_t count) {
            REQUIRE(offset + count <= bytes.size());
            std::memcpy(buffer, bytes.data() + offset, count);
            bytesRead += count;
            largestRead = std::max(largestRead, count);
        };
        const auto keep = [&](std::string_view line) {
            ++offered;
            rows.emplace_back(line);
            return true;
        };
        ReadNewestLines(bytes.size(), read, keep, limit, kLogBlockSize);
        return rows;
    }

    const std::string bytes;
    int offered = 0;
    size_t bytesRead = 0;
    size_t largestRead = 0;
};

}  // namespace

TEST_CASE("thirty lines leave the newest twenty-five, the newest first") {
    std::string log;
    for (int i = 1; i <= 30; ++i)
        log += "line " + std::to_string(i) + "\r\n";
    const Rows rows = TextLog{log}.Read();
    REQUIRE(rows.size() == 25);
    for (int i = 0; i < 25; ++i)
        CHECK(rows[static_cast<size_t>(i)] == "line " + std::to_string(30 - i));
    CHECK(TextLog{log}.Read(0).empty());
}

TEST_CASE("a line is what stands before an LF or a CR LF, and two lines are equal byte by byte") {
    const std::tuple<std::string, std::string, Rows> rows[] = {
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
        CHECK(TextLog{log}.Read() == lines);
    }
}

TEST_CASE("a log is read in blocks, each byte once, and no further than until the list is full") {
    std::string distinct;
    for (int i = 0; i < 10000; ++i)
        distinct += "http://site/" + std::to_string(i) + "\r\n";
    std::string repeated;
    for (int i = 0; i < 50000; ++i)
        repeated += "http://www.example.com/popup.htm\r\n";
    const std::string huge = "first\r\n" + std::string(20 << 20, 'y') + "\r\nlast\r\n";
    const std::tuple<std::string, std::string, int, size_t> rows[] = {
        {"lines that fill the list", distinct, 25, kLogBlockSize},
        {"one repeated line", repeated, 1, repeated.size()},
        {"a line of many megabytes", huge, 3, huge.size()},
    };
    for (const auto& [meaning, bytes, offered, bytesRead] : rows) {
        CAPTURE(meaning);
        TextLog log{bytes};
        CHECK((log.Read() == PlainNewestLines(bytes, kLimit)));
        CHECK(log.offered == offered);
        CHECK(log.bytesRead == bytesRead);
        CHECK(log.largestRead == kLogBlockSize);
    }
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
    const auto read = [](std::uint64_t, char* buffer, size_t count) { std::memset(buffer, '\n', count); };
    const auto keep = [](std::string_view) -> bool { throw std::runtime_error("full"); };
    CHECK_THROWS_AS(ReadNewestLines(4, read, keep, kLimit, kLogBlockSize), std::runtime_error);
}
