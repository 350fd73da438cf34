// The newest lines of a log that may be larger than memory: read from its end, block by block, and no further
// than needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

inline constexpr std::size_t kLogBlockSize = 65536;

// Fills buffer with count bytes of the log from offset on; throws when it cannot deliver all of them.
using ReadBytes = std::function<void(std::uint64_t offset, char* buffer, std::size_t count)>;

// Is offered a line, without its line end, and returns whether it keeps it.
using KeepLine = std::function<bool(std::string_view line)>;

// Offers the lines in the first size bytes of a log from the last to the first, until limit of them are kept.
// A line that equals a kept one byte for byte is passed over. Whatever read and keep throw ends the reading;
// what was kept until then is the caller's.
//
// LF and CR LF end a line, any other CR belongs to it. What follows the last line end is a line unless it is
// empty. Lines may have any length and hold any byte but LF; memory is held for the kept lines and the
// longest one only. blockSize: bytes asked of read at a time, at least 1.
void ReadNewestLines(std::uint64_t size, const ReadBytes& read, const KeepLine& keep, std::size_t limit,
                     std::size_t blockSize);
