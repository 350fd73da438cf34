// Logs of any length, and reading them without looking at them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

inline constexpr std::uint64_t kMegabyte = 1 << 20;
inline constexpr std::uint64_t kGigabyte = 1 << 30;

// Replaces the file by lines, each ended by CR LF, until it has at least this many bytes. filler: so many
// bytes that are never written lie before them, and a line end.
void WriteLog(const std::wstring& path, std::uint64_t bytes, const std::function<std::string(size_t n)>& line,
              std::uint64_t filler = 0);

// Reads the whole file, front to back, in blocks of the size that the product reads.
void ReadThrough(const std::wstring& path);

// Reads the last block of the file, or all of a shorter one.
void ReadLastBlock(const std::wstring& path);

// The whole file.
std::string Contents(const std::wstring& path);
