#include <cstdlib>

#include "tests/fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (!ByteOrderAgrees(data, size)) std::abort();
    return 0;
}
