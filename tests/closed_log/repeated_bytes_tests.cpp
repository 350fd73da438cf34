// The count of repeated bytes, with either way of comparing them.
#include <doctest.h>

#include <algorithm>
#include <random>
#include <string>

#include "lists/repeated_bytes.h"

namespace {

struct Way {
    const char* name;
    RepeatedBytes::Skip skip;
};

constexpr Way kWays[] = {{"words", &RepeatedBytes::SkipWords}, {"vectors", &RepeatedBytes::SkipVectors}};

// Byte for byte.
size_t PlainCount(const char* end, size_t distance, size_t size) {
    size_t count = 0;
    while (count < size && *(end - 1 - count) == *(end - 1 - count + distance))
        ++count;
    return count;
}

}  // namespace

TEST_CASE(
    "the count of repeated bytes ends at the first difference, wherever that is, with and without SSE2") {
    constexpr size_t kLongest = 4 * RepeatedBytes::kStep + 5;
    for (const size_t distance : {size_t{1}, size_t{3}, size_t{16}, size_t{63}, size_t{64}, size_t{65}}) {
        for (size_t size = 0; size <= kLongest; ++size) {
            const std::string line(distance, 'x');
            for (size_t different = 0; different <= size; different += 1 + different / 40) {
                // The byte that differs stands that many before the end; none does where that is all of them.
                std::string bytes = "y" + std::string(size, 'x') + line;
                if (different < size) bytes[size - different] = 'X';
                const char* const end = bytes.data() + 1 + size;
                const size_t expected = PlainCount(end, distance, size);
                for (const Way& way : kWays) {
                    INFO(way.name << ", distance " << distance << ", size " << size << ", difference "
                                  << different);
                    if (RepeatedBytes::Count(end, distance, size, way.skip) != expected)
                        FAIL_CHECK("another count");
                }
                if (RepeatedBytes::Count(end, distance, size) != expected) FAIL_CHECK("another count");
            }
        }
    }
}

TEST_CASE("of bytes by chance both ways of comparing count the same") {
    std::mt19937 random(20040117);
    long whole = 0;
    for (int i = 0; i < 20000; ++i) {
        const size_t distance = 1 + random() % 200;
        std::string line(distance, '\0');
        for (char& each : line)
            each = static_cast<char>(random() % 3);
        std::string bytes;
        const size_t repeats = random() % 12;
        for (size_t k = 0; k <= repeats; ++k)
            bytes += line;
        if (random() % 4 != 0) bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
        const size_t size = bytes.size() - distance;
        const char* const end = bytes.data() + size;
        const size_t expected = PlainCount(end, distance, size);
        whole += expected == size ? 1 : 0;
        for (const Way& way : kWays) {
            INFO(way.name << ", number " << i);
            if (RepeatedBytes::Count(end, distance, size, way.skip) != expected) FAIL_CHECK("another count");
        }
    }
    CHECK(whole > 1000);
    CHECK(whole < 19000);
}
