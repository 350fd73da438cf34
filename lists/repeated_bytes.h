// How far bytes repeat themselves: what a log that repeats a line spends its time on. Inline, since it stands
// in the innermost loop of a reading.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstring>

namespace RepeatedBytes {

using Word = std::size_t;

inline Word WordAt(const char* bytes) noexcept {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// How many bytes are compared at once.
inline constexpr std::size_t kStep = 64;

// Whether kStep bytes are equal; without a branch between them.
inline bool EqualWords(const char* left, const char* right) noexcept {
    Word difference = 0;
    for (std::size_t i = 0; i < kStep; i += sizeof(Word))
        difference |= WordAt(left + i) ^ WordAt(right + i);
    return difference == 0;
}

[[gnu::target("sse2")]] inline bool EqualVectors(const char* left, const char* right) noexcept {
    __m128i equal = _mm_set1_epi8(-1);
    for (std::size_t i = 0; i < kStep; i += sizeof(__m128i)) {
        const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left + i));
        const __m128i there = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right + i));
        equal = _mm_and_si128(equal, _mm_cmpeq_epi8(here, there));
    }
    return _mm_movemask_epi8(equal) == 0xFFFF;
}

// Goes back from end by whole steps, not beyond begin, as long as the bytes equal those that lie distance
// bytes behind them, and answers where it stopped.
using Skip = const char* (*)(const char* begin, const char* end, std::size_t distance) noexcept;

inline const char* SkipWords(const char* begin, const char* end, std::size_t distance) noexcept {
    while (static_cast<std::size_t>(end - begin) >= kStep && EqualWords(end - kStep, end - kStep + distance))
        end -= kStep;
    return end;
}

// For processors with SSE2.
[[gnu::target("sse2")]] inline const char* SkipVectors(const char* begin, const char* end,
                                                       std::size_t distance) noexcept {
    while (static_cast<std::size_t>(end - begin) >= kStep &&
           EqualVectors(end - kStep, end - kStep + distance))
        end -= kStep;
    return end;
}

// How many of the bytes before end, size at most, equal those that lie distance bytes behind them.
inline std::size_t Count(const char* end, std::size_t distance, std::size_t size, Skip skip) noexcept {
    const char* const begin = end - size;
    const char* bytes = skip(begin, end, distance);
    while (bytes != begin && bytes[-1] == bytes[distance - 1])
        --bytes;
    return static_cast<std::size_t>(end - bytes);
}

inline std::size_t Count(const char* end, std::size_t distance, std::size_t size) noexcept {
    // Windows 7 runs without SSE2 too.
    static const Skip skip = __builtin_cpu_supports("sse2") ? &SkipVectors : &SkipWords;
    return Count(end, distance, size, skip);
}

}  // namespace RepeatedBytes
