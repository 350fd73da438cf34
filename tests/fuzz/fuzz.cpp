#include <cstdlib>

#include "tests/fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr bool (*kTargets[])(const std::uint8_t*, std::size_t) = {NewestLinesAgree, SiteAgrees,
                                                                      ByteOrderAgrees};
    if (size != 0 && !kTargets[data[0] % 3](data + 1, size - 1)) std::abort();
    return 0;
}
