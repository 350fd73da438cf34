// Each allocation ends at the end of its own pages, behind which lies one that was never made accessible. The
// pages of a released one become inaccessible, and come into use again only when the whole range has been
// gone through. They stay committed: giving them back and taking them again costs twice as much.
#include "tests/pairs/guarded_memory.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <span>
#include <utility>

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPages = 16 * 1024;
constexpr std::size_t kAlignment = 16;

bool guards = false;
unsigned long allocations = 0;
std::byte* base = nullptr;
std::size_t next = 0;

// How many pages the allocation has that begins at a page; 0xFFFF within one, 0 where none is.
std::uint16_t used[kPages];
constexpr std::uint16_t kWithin = 0xFFFF;

// Takes count pages and one more, which stays inaccessible and belongs to the allocation.
std::size_t TakePages(std::size_t count) {
    for (std::size_t tried = 0; tried < kPages; ++tried, ++next) {
        if (next + count + 1 > kPages) next = 0;
        const auto pages = std::span(used).subspan(next, count + 1);
        if (!std::ranges::all_of(pages, [](std::uint16_t page) { return page == 0; })) continue;
        std::ranges::fill(pages, kWithin);
        pages[0] = static_cast<std::uint16_t>(count);
        return std::exchange(next, next + count + 1);
    }
    throw std::bad_alloc();
}

bool SetAccess(std::size_t page, std::size_t count, DWORD access) {
    DWORD previous = 0;
    return VirtualProtect(base + page * kPage, count * kPage, access, &previous) != FALSE;
}

void* Allocate(std::size_t size) {
    if (size == 0) size = 1;
    const std::size_t count = (size + kPage - 1) / kPage;
    const std::size_t page = TakePages(count);
    if (!SetAccess(page, count, PAGE_READWRITE)) throw std::bad_alloc();
    ++allocations;
    return base + page * kPage + (count * kPage - size) / kAlignment * kAlignment;
}

bool IsGuarded(const void* memory) {
    const auto* const address = static_cast<const std::byte*>(memory);
    return base != nullptr && address >= base && address < base + kPages * kPage;
}

void Release(void* memory) {
    if (!IsGuarded(memory)) return std::free(memory);
    const std::size_t page = static_cast<std::size_t>(static_cast<std::byte*>(memory) - base) / kPage;
    const std::size_t count = used[page];
    // Released twice, or not where it was allocated.
    if (count == 0 || count == kWithin) RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    SetAccess(page, count, PAGE_NOACCESS);
    std::ranges::fill(std::span(used).subspan(page, count + 1), std::uint16_t{0});
}

}  // namespace

GuardedMemory::GuardedMemory() {
    if (base == nullptr) {
        base = static_cast<std::byte*>(
            VirtualAlloc(nullptr, kPages * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
    }
    if (base == nullptr) throw std::bad_alloc();
    guards = true;
}

GuardedMemory::~GuardedMemory() {
    guards = false;
}

unsigned long GuardedMemory::Allocations() noexcept {
    return allocations;
}

void* operator new(std::size_t size) {
    if (guards) return Allocate(size);
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    Release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    Release(memory);
}
