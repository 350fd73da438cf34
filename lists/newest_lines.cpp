#include "lists/newest_lines.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

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

    // Whether the next line is this one. False also when not enough of the log has been read to
    // tell.
    bool NextIs(const std::string& line) const noexcept {
        const std::size_t end = LineEnd();
        if (end - m_begin < line.size()) return false;
        const std::size_t start = end - line.size();
        return BeginsAt(start) && std::string_view(m_bytes.get() + start, line.size()) == line;
    }

    // The next line; false when its beginning has not been read yet.
    bool FindNext(std::string_view& line) noexcept {
        const std::string_view unread(m_bytes.get() + m_begin, LineEnd() - m_begin);
        const std::size_t feed = unread.substr(0, m_searched - m_begin).rfind('\n');
        if (feed == std::string_view::npos && m_offset != 0) {
            m_searched = m_begin;
            return false;
        }
        line = feed == std::string_view::npos ? unread : unread.substr(feed + 1);
        return true;
    }

    // Takes the next line, which has this many bytes.
    void Take(std::size_t size) noexcept { TakeFrom(LineEnd() - size); }

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

    // Moves the unread bytes, the rear part of one line, to the rear of the buffer. The space before them
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

// Takes the next line when it is one of kept. Logs repeat themselves: the search starts with the line found
// last.
bool TakeKept(LinesFromEnd& lines, const std::vector<std::string>& kept, std::size_t& last) noexcept {
    for (std::size_t n = 0; n < kept.size(); ++n, last = (last + 1) % kept.size()) {
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
