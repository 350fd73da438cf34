// Loading and saving all settings with lists of many lengths.
#include "bench/support/transfer_comparison.h"

namespace {

constexpr Lengths kLengths[] = {{"empty lists", 0, 0, 0, 15, 10, 1.15},
                                {"100 exclude rows", 100, 0, 0, 15, 2, 1.15},
                                {"1,000 exclude rows", 1000, 0, 0, 9, 1, 1.15},
                                {"10,000 exclude rows", 10000, 0, 0, 5, 1, 1.15},
                                {"1,000 banner rows", 0, 1000, 0, 9, 1, 1.15}};

}  // namespace

int wmain() {
    return CompareTransfers(kLengths);
}
