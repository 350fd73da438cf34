#include "tests/long_runs/repetition.h"

#include <doctest.h>

#include <cstdlib>

namespace {

// What a run may leave, whatever its length: caches of Windows that fill once.
constexpr long kHeapCeiling = 64 * 1024;  // bytes
constexpr long kHandleCeiling = 8;
constexpr long kObjectCeiling = 4;

}  // namespace

int Times(int count) {
    const char* const text = std::getenv("LONG_RUN");
    return count * (text != nullptr ? std::atoi(text) : 1);
}

void CheckKept(const std::string& what, long count, const Resources& before, long keys, DWORD start) {
    const Resources after = HeldNow();
    CHECK(after.heapBytes - before.heapBytes < kHeapCeiling);
    CHECK(after.kernelHandles - before.kernelHandles - keys < kHandleCeiling);
    CHECK(after.gdiObjects - before.gdiObjects < kObjectCeiling);
    CHECK(after.menus - before.menus < kObjectCeiling);
    CHECK(after.windows - before.windows < kObjectCeiling);
    MESSAGE(what << ": " << count << " times, " << GetTickCount() - start << " ms; heap "
                 << after.heapBytes - before.heapBytes << " bytes in " << after.heapBlocks - before.heapBlocks
                 << " blocks, kernel handles " << after.kernelHandles - before.kernelHandles
                 << " (of them by design " << keys << " registry keys), GDI objects "
                 << after.gdiObjects - before.gdiObjects << ", menus " << after.menus - before.menus
                 << ", windows " << after.windows - before.windows);
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
