#include "tests/long_runs/resources.h"

#include <winternl.h>

#include <algorithm>

#include "platform/system_library.h"

namespace {

constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);

void CountHeap(Resources& held) {
    HANDLE heaps[64];
    const DWORD count = std::min(GetProcessHeaps(64, heaps), DWORD{64});
    for (DWORD i = 0; i < count; ++i) {
        HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
            held[HeapBytes] += static_cast<long>(entry.cbData);
            ++held[HeapBlocks];
        }
        HeapUnlock(heaps[i]);
    }
}

// Windows tells how many there are. Wine does not everywhere, but tells what lies behind the lower half of a
// handle.
long CountGdiObjects() {
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return static_cast<long>(count);
    long count = 0;
    for (ULONG_PTR index = 0; index < 0x4000; ++index)
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0 ? 1 : 0;
    return count;
}

void CountUserObjects(Resources& held) {
    for (ULONG_PTR handle = 0x20; handle < 0x8000; handle += 2) {
        if (IsMenu(reinterpret_cast<HMENU>(handle))) ++held[MenuHandles];
        DWORD process = 0;
        if (GetWindowThreadProcessId(reinterpret_cast<HWND>(handle), &process) != 0 &&
            process == GetCurrentProcessId()) {
            ++held[WindowHandles];
        }
    }
}

long KernelHandlesOf(DWORD processId) {
    auto* const query = FunctionOf<decltype(NtQuerySystemInformation)>(GetModuleHandleW(L"ntdll.dll"),
                                                                       "NtQuerySystemInformation");
    // Outside the heaps, which are counted too.
    void* buffer = nullptr;
    for (ULONG size = 4 << 20;; size *= 2) {
        buffer = VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE);
        if (query(SystemHandleInformation, buffer, size, nullptr) != kLengthMismatch) break;
        VirtualFree(buffer, 0, MEM_RELEASE);
    }
    const auto& all = *static_cast<const SYSTEM_HANDLE_INFORMATION*>(buffer);
    const auto held = std::count_if(all.Handle, all.Handle + all.Count, [&](const SYSTEM_HANDLE_ENTRY& each) {
        return each.OwnerPid == processId;
    });
    VirtualFree(buffer, 0, MEM_RELEASE);
    return static_cast<long>(held);
}

}  // namespace

Resources HeldNow() {
    Resources held{};
    held[KernelHandles] = KernelHandlesOf(GetCurrentProcessId());
    CountHeap(held);
    held[GdiObjects] = CountGdiObjects();
    CountUserObjects(held);
    return held;
}
