#include "platform/clipboard.h"

#include <cstring>

#include "platform/handle.h"

void CopyToClipboard(HWND owner, const std::wstring& text) {
    const size_t size = (text.size() + 1) * sizeof(wchar_t);
    GlobalMemory memory(GlobalAlloc(GMEM_MOVEABLE, size));
    if (!memory || !OpenClipboard(owner)) return;
    std::memcpy(GlobalLock(memory.Get()), text.c_str(), size);
    GlobalUnlock(memory.Get());
    EmptyClipboard();
    if (SetClipboardData(CF_UNICODETEXT, memory.Get()) != nullptr) memory.Detach();  // Windows owns it now
    CloseClipboard();
}
