#include "tests/fault_sweep/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

// How many allocations still succeed before one fails; below 0 none fails.
long g_allocationsLeft = -1;
bool g_isLasting = false;
bool g_happened = false;

}  // namespace

FailingAllocation::FailingAllocation(long k, bool isLasting) noexcept {
    g_isLasting = isLasting;
    g_happened = false;
    g_allocationsLeft = k - 1;
}

FailingAllocation::~FailingAllocation() {
    g_allocationsLeft = -1;
}

bool FailingAllocation::Happened() noexcept {
    return g_happened;
}

bool FailingAllocation::IsLasting() noexcept {
    return g_isLasting;
}

bool FailingAllocation::IsNext() noexcept {
    if (g_allocationsLeft < 0) return false;
    if (g_allocationsLeft > 0) {
        --g_allocationsLeft;
        return false;
    }
    g_happened = true;
    if (!g_isLasting) g_allocationsLeft = -1;
    return true;
}

void* operator new(std::size_t size) {
    if (FailingAllocation::IsNext()) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
