// What the fuzzer and the generated tests check: each returns whether the program and the plain way
// agree.
#pragma once

#include <cstddef>
#include <cstdint>

// data: two bytes for the size of the blocks, and for the number of lines wanted and whether some of them are
// taken for equal; then the log.
bool NewestLinesAgree(const std::uint8_t* data, std::size_t size);

// data: the address, two bytes a character.
bool SiteAgrees(const std::uint8_t* data, std::size_t size);

// data: bytes as a value of the registry holds them, or any text, a byte a character.
bool ByteOrderAgrees(const std::uint8_t* data, std::size_t size);
