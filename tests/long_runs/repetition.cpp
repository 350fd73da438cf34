#include "tests/long_runs/repetition.h"

#include <doctest.h>

#include <cstdlib>

namespace {

// What a run may leave, whatever its length: caches of Windows that fill once.
constexpr long kHeapCeiling = 64 * 1024;  // bytes
constexpr long kBlockCeiling = 64;        // fewer than any run has rounds
constexpr long kHandleCeiling = 8;
constexpr long kObjectCeiling = 4;

}  // namespace

int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

void CheckKept(const std::string& what, long count, const Resources& kept, long keys, DWORD start,
               const Resources& bare) {
    CHECK(kept.heapBytes - bare.heapBytes < kHeapCeiling);
    CHECK(kept.heapBlocks - bare.heapBlocks < kBlockCeiling);
    CHECK(kept.kernelHandles - bare.kernelHandles - keys < kHandleCeiling);
    CHECK(kept.gdiObjects - bare.gdiObjects < kObjectCeiling);
    CHECK(kept.menus - bare.menus < kObjectCeiling);
    CHECK(kept.windows - bare.windows < kObjectCeiling);
    MESSAGE(what << ": " << count << " times, " << GetTickCount() - start << " ms; heap " << kept.heapBytes
                 << " bytes in " << kept.heapBlocks << " blocks (bare " << bare.heapBytes << " in "
                 << bare.heapBlocks << "), kernel handles " << kept.kernelHandles << " (of them by design "
                 << keys << " registry keys, bare " << bare.kernelHandles << "), GDI objects "
                 << kept.gdiObjects << " (" << bare.gdiObjects << "), menus " << kept.menus << " ("
                 << bare.menus << "), windows " << kept.windows << " (" << bare.windows << ")");
}

long Impatience::s_menus = 0;
long Impatience::s_dialogs = 0;

Impatience::Impatience() {
    s_menus = s_dialogs = 0;
    m_hook = SetWindowsHookExW(WH_CALLWNDPROC, Watch, nullptr, GetCurrentThreadId());
}

Impatience::~Impatience() {
    UnhookWindowsHookEx(m_hook);
}

LRESULT CALLBACK Impatience::Watch(int code, WPARAM wParam, LPARAM lParam) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && sent.message == WM_ENTERIDLE) {
        if (sent.wParam == MSGF_MENU) {
            ++s_menus;
            EndMenu();
        } else {
            ++s_dialogs;
            PostMessageW(reinterpret_cast<HWND>(sent.lParam), WM_COMMAND, IDCANCEL, 0);
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}
