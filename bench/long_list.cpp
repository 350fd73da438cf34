// Loading and saving lists of 30,000 and 100,000 rows. It takes minutes, nearly all of them in the system's
// registry.
#include "bench/support/transfer_comparison.h"

namespace {

constexpr Lengths kLengths[] = {{"30,000 exclude rows", 30000, 0, 0, 1, 1, 1.15},
                                {"100,000 exclude rows", 100000, 0, 0, 1, 1, 1.15}};

}  // namespace

int wmain() {
    return CompareTransfers(kLengths);
}
