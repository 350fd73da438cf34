#include "platform/com/bstr.h"

#include <new>

#include "platform/com/com_method.h"

BSTR NewBstr(std::wstring_view text) {
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

std::wstring_view ViewOf(BSTR text) noexcept {
    return {text, SysStringLen(text)};
}

HRESULT ReturnText(std::wstring_view text, BSTR* value) noexcept {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] { *value = NewBstr(text); });
}
