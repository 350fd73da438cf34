// How the list views are stored: which fields an entry has, and in which column each is shown.
#pragma once

#include <span>
#include <string_view>

#include "lists/banner_sizes.h"
#include "lists/search_addresses.h"
#include "platform/controls/list_view.h"
#include "store/settings_schema.h"

// An entry has a name, which is its row's text, these fields, and its use, which is its check mark. Entries
// count from 1, as rows do.
struct ListLayout {
    const wchar_t* control;
    const wchar_t* key;
    void (*setupColumns)(ListView& list);           // also empties the list
    std::span<const wchar_t* const> subItemFields;  // of sub-items 1, 2, ...
};

inline constexpr const wchar_t* kBannerFields[] = {Schema::kWidth, Schema::kHeight};
inline constexpr const wchar_t* kSearchFields[] = {Schema::kURL};

inline constexpr ListLayout kListLayouts[] = {
    {L"lvwBanners", Schema::kBannersKey, SetupBannerColumns, kBannerFields},
    {L"lvwSearchURLs", Schema::kSearchKey, SetupSearchColumns, kSearchFields},
};

inline constexpr wchar_t kExcludeControl[] = L"lstExclude";

// Null for a list view that is not stored.
inline const ListLayout* LayoutOf(std::wstring_view control) {
    for (const ListLayout& layout : kListLayouts) {
        if (control == layout.control) return &layout;
    }
    return nullptr;
}
