// The lists that are stored.
#pragma once

#include <string_view>

#include "lists/banner_sizes.h"
#include "lists/search_addresses.h"

inline constexpr ListLayout kListLayouts[] = {kBannerLayout, kSearchLayout};

// A list box: its rows are stored under their numbers alone, from 0 on.
inline constexpr wchar_t kExcludeControl[] = L"lstExclude";

// Null for a list view that is not stored.
inline const ListLayout* LayoutOf(std::wstring_view control) {
    for (const ListLayout& layout : kListLayouts) {
        if (control == layout.control) return &layout;
    }
    return nullptr;
}
