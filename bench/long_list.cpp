// Loading and saving a list of 100,000 rows. It takes minutes, nearly all of them in the system's registry.
#include "bench/support/transfer_comparison.h"

namespace {

constexpr Lengths kLengths[] = {{"100,000 exclude rows", 100000, 0, 0, 1, 1, 1.15}};

}  // namespace

int wmain() {
    return CompareTransfers(kLengths);
}
