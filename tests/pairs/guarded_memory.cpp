// This program's own operator new and delete, which show every use of memory after its release and every step
// over its end as a crash: each allocation ends at the end of its own pages, behind which lies one that was
// never made accessible. The pages of a released one become inaccessible, and come into use again only when
// the whole range has been gone through. They stay committed: giving them back and taking them again costs
// twice as much. For one thread.
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <utility>

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPages = 16 * 1024;
constexpr std::size_t kAlignment = 16;

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

}  // namespace

void* operator new(std::size_t size) {
    if (base == nullptr) {
        base = static_cast<std::byte*>(
            VirtualAlloc(nullptr, kPages * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
    }
    const std::size_t count = std::max<std::size_t>((size + kPage - 1) / kPage, 1);
    const std::size_t page = TakePages(count);
    if (!SetAccess(page, count, PAGE_READWRITE)) throw std::bad_alloc();
    return base + page * kPage + (count * kPage - std::max<std::size_t>(size, 1)) / kAlignment * kAlignment;
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    const std::size_t page = static_cast<std::size_t>(static_cast<std::byte*>(memory) - base) / kPage;
    const std::size_t count = page < kPages ? used[page] : 0;
    // Released twice, or not where it was allocated.
    if (count == 0 || count == kWithin) RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    SetAccess(page, count, PAGE_NOACCESS);
    std::ranges::fill(std::span(used).subspan(page, count + 1), std::uint16_t{0});
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
