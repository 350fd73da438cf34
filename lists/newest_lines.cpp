#include "lists/newest_lines.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lists/repeated_bytes.h"

namespace {

using RepeatedBytes::Word;
using RepeatedBytes::WordAt;

// These two and the count of repeated bytes take most of the time of a reading, and therefore compare machine
// words.

// Addresses of one length differ at their end rather than at their beginning: the last word is compared
// first.
inline bool Equal(const char* left, const char* right, std::size_t size) noexcept {
    if (size >= sizeof(Word)) {
        size -= sizeof(Word);
        if (WordAt(left + size) != WordAt(right + size)) return false;
        for (; size >= sizeof(Word); size -= sizeof(Word), left += sizeof(Word), right += sizeof(Word)) {
            if (WordAt(left) != WordAt(right)) return false;
        }
    }
    for (; size != 0; --size) {
        if (*left++ != *right++) return false;
    }
    return true;
}

// Null when there is none.
inline const char* FindLastLineFeed(const char* begin, const char* end) noexcept {
    constexpr Word kOnes = ~Word{0} / 0xFF;
    constexpr Word kHighBits = kOnes * 0x80;
    for (; static_cast<std::size_t>(end - begin) >= sizeof(Word); end -= sizeof(Word)) {
        // Line feeds become zero bytes, and the test finds a zero byte in a word.
        const Word word = WordAt(end - sizeof(Word)) ^ (kOnes * '\n');
        if (((word - kOnes) & ~word & kHighBits) != 0) break;
    }
    while (end != begin) {
        if (*--end == '\n') return end;
    }
    return nullptr;
}

// Splits a log into lines, from its end.
class LinesFromEnd {
public:
    LinesFromEnd(std::uint64_t size, const ReadBytes& read, std::size_t blockSize)
        : m_read(read), m_blockSize(blockSize), m_offset(size), m_done(size == 0) {
        if (m_done) return;
        ReadBlock();
        // A line end at the end of the log begins no further line.
        if (m_bytes[m_end - 1] == '\n') TakeFrom(m_end);
    }

    bool Done() const noexcept { return m_done; }

    // Whether the next line is this one. Answers false also when not enough of the log has been read to tell.
    bool NextIs(const std::string& line) const noexcept {
        const std::size_t end = LineEnd();
        if (end - m_begin < line.size()) return false;
        const std::size_t start = end - line.size();
        return BeginsAt(start) && Equal(m_bytes.get() + start, line.data(), line.size());
    }

    // The next line; false when its beginning has not been read yet.
    bool FindNext(std::string_view& line) noexcept {
        const char* const bytes = m_bytes.get();
        const char* const feed = FindLastLineFeed(bytes + m_begin, bytes + m_searched);
        if (feed == nullptr && m_offset != 0) {
            m_searched = m_begin;
            return false;
        }
        const std::size_t start = feed == nullptr ? m_begin : static_cast<std::size_t>(feed - bytes) + 1;
        line = std::string_view(bytes + start, LineEnd() - start);
        return true;
    }

    // Takes the next line, which has this many bytes, and with it those before it that equal it. Without a
    // line end a CR means something else, so that bytes cannot be compared then.
    void Take(std::size_t size) noexcept {
        const std::size_t end = m_end;
        const bool ended = m_ended;
        TakeFrom(LineEnd() - size);
        if (m_done || !ended) return;
        const std::size_t taken = end - m_end;
        m_end -= RepeatedBytes::Count(m_bytes.get() + m_end, taken, m_end - m_begin) / taken * taken;
        m_searched = m_end;
    }

    // Reads the block before the unread bytes. To be called when there is no line feed among these.
    void ReadBlock() {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(m_blockSize, m_offset));
        if (m_begin < count) MakeRoom();
        m_read(m_offset - count, m_bytes.get() + (m_begin - count), count);
        m_begin -= count;
        m_offset -= count;
    }

private:
    // A CR before the LF that was taken belongs to the line end.
    std::size_t LineEnd() const noexcept {
        return m_ended && m_end != m_begin && m_bytes[m_end - 1] == '\r' ? m_end - 1 : m_end;
    }

    bool BeginsAt(std::size_t start) const noexcept {
        return start == m_begin ? m_offset == 0 : m_bytes[start - 1] == '\n';
    }

    // Takes what begins at index start, and the LF before it.
    void TakeFrom(std::size_t start) noexcept {
        m_done = start == m_begin;
        m_ended = true;
        m_end = m_done ? start : start - 1;
        m_searched = m_end;
    }

    // Moves the unread bytes, the rear part of one line, to the rear of the buffer. The room before them
    // grows with that line, so that no byte is moved more than a few times, and is given back once the line
    // has been taken.
    void MakeRoom() {
        const std::size_t held = m_end - m_begin;
        const std::size_t wanted = held + held / 2 + m_blockSize;
        const char* const unread = m_bytes.get() + m_begin;
        if (m_size < wanted || m_size / 2 > wanted) {
            auto bytes = std::make_unique_for_overwrite<char[]>(wanted);
            if (held != 0) std::memcpy(bytes.get() + (wanted - held), unread, held);
            m_bytes = std::move(bytes);
            m_size = wanted;
        } else {
            std::memmove(m_bytes.get() + (m_size - held), unread, held);
        }
        m_begin = m_size - held;
        m_end = m_size;
        m_searched = m_begin;
    }

    const ReadBytes& m_read;
    const std::size_t m_blockSize;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_begin = 0;  // the unread bytes are those from m_begin to m_end
    std::size_t m_end = 0;
    std::size_t m_searched = 0;  // there is no line feed from here to m_end
    std::uint64_t m_offset;      // where in the log the unread bytes begin
    bool m_ended = false;        // a line end follows the unread bytes
    bool m_done;
};

// Takes the next line when it is one of kept. Logs repeat themselves, and a line that repeats itself has been
// taken as often as it does: the search starts behind the line found last.
bool TakeKept(LinesFromEnd& lines, const std::vector<std::string>& kept, std::size_t& last) noexcept {
    for (std::size_t n = 0; n < kept.size(); ++n) {
        if (++last >= kept.size()) last = 0;
        if (lines.NextIs(kept[last])) {
            lines.Take(kept[last].size());
            return true;
        }
    }
    return false;
}

}  // namespace

void ReadNewestLines(std::uint64_t size, const ReadBytes& read, const KeepLine& keep, std::size_t limit,
                     std::size_t blockSize) {
    LinesFromEnd lines(size, read, blockSize);
    std::vector<std::string> kept;
    std::size_t last = 0;
    while (kept.size() < limit && !lines.Done()) {
        if (TakeKept(lines, kept, last)) continue;
        std::string_view line;
        if (!lines.FindNext(line)) {
            lines.ReadBlock();
            continue;
        }
        const std::size_t lineSize = line.size();
        if (keep(line)) kept.emplace_back(line);
        lines.Take(lineSize);
    }
}
