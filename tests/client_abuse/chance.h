// Random numbers that a printed seed brings back.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <random>

class Chance {
public:
    // The environment variable ABUSE_SEED holds another seed than the usual one.
    static uint32_t Seed() {
        const char* const text = std::getenv("ABUSE_SEED");
        return text != nullptr ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : 20020517u;
    }

    // How often: the environment variable holds another number than the usual one.
    static long Count(const char* variable, long usual) {
        const char* const text = std::getenv(variable);
        return text != nullptr ? std::atol(text) : usual;
    }

    explicit Chance(uint32_t seed) : m_engine(seed) {}

    uint32_t Number() { return m_engine(); }
    uint32_t Below(uint32_t limit) { return m_engine() % limit; }
    bool OneIn(uint32_t count) { return Below(count) == 0; }

    template <class Range>
    auto& From(Range& range) {
        return range[Below(static_cast<uint32_t>(std::size(range)))];
    }

    // A number as careless callers pass it: small, negative, at a limit, or anything.
    LONG Odd() {
        constexpr LONG kOdd[] = {0,    1,      -1,      2,      3,          5,
                                 1025, 0x7FFF, -0x8000, 0xFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1};
        return OneIn(3) ? static_cast<LONG>(Number()) : From(kOdd);
    }

private:
    std::mt19937 m_engine;
};
