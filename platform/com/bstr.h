// The strings of Automation. A null BSTR is the empty text.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string_view>

#include "platform/handle.h"

struct BstrTraits : NullHandleTraits<BSTR> {
    static void Close(Type text) noexcept { SysFreeString(text); }
};

using BstrHandle = UniqueHandle<BstrTraits>;

// For a caller who frees it. Throws std::bad_alloc.
BSTR NewBstr(std::wstring_view text);

// A view of text, valid as long as text itself.
std::wstring_view ViewOf(BSTR text) noexcept;

// The body of a method that hands a text out: stores a copy that the caller frees, or null on failure.
HRESULT ReturnText(std::wstring_view text, BSTR* value) noexcept;
