#include "tests/long_runs/resources.h"

namespace {

// Of ntdll: the handles of all processes.
constexpr ULONG kSystemHandleInformation = 16;
constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);

struct HandleEntry {
    ULONG processId;
    BYTE objectType;
    BYTE flags;
    USHORT value;
    PVOID object;
    ACCESS_MASK access;
};

void CountHeap(Resources& held) {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    for (DWORD i = 0; i < count && i < 64; ++i) {
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
    constexpr ULONG_PTR kIndexes = 0x4000;
    long count = 0;
    for (ULONG_PTR index = 0; index < kIndexes; ++index)
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0 ? 1 : 0;
    return count;
}

void CountUserObjects(Resources& held) {
    for (ULONG_PTR handle = 0x20; handle < 0x8000; handle += 2) {
        if (IsMenu(reinterpret_cast<HMENU>(handle))) ++held[MenuHandles];
        DWORD process = 0;
        if (IsWindow(reinterpret_cast<HWND>(handle)) &&
            GetWindowThreadProcessId(reinterpret_cast<HWND>(handle), &process) != 0 &&
            process == GetCurrentProcessId()) {
            ++held[WindowHandles];
        }
    }
}

long KernelHandlesOf(DWORD processId) {
    using Query = LONG(WINAPI*)(ULONG, PVOID, ULONG, PULONG);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    // Outside the heaps, which are counted too.
    ULONG size = 4 << 20;
    ULONG needed = 0;
    BYTE* buffer = nullptr;
    while (buffer = static_cast<BYTE*>(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE)),
           query(kSystemHandleInformation, buffer, size, &needed) == kLengthMismatch) {
        VirtualFree(buffer, 0, MEM_RELEASE);
        size *= 2;
    }
    const ULONG count = *reinterpret_cast<const ULONG*>(buffer);
    const auto* const entries = reinterpret_cast<const HandleEntry*>(buffer + sizeof(ULONG));
    long held = 0;
    for (ULONG i = 0; i < count; ++i)
        held += entries[i].processId == processId ? 1 : 0;
    VirtualFree(buffer, 0, MEM_RELEASE);
    return held;
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
