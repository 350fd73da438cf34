// The first-run defaults as they must be, spelled out apart from the schema, and checks against them.
#pragma once

#include <string>
#include <vector>

#include "tests/support/test_hive.h"

inline constexpr wchar_t kSettings[] = L"Software\\Calvane\\Settings";
inline constexpr wchar_t kExclude[] = L"Software\\Calvane\\Exclude";
inline constexpr wchar_t kBanners[] = L"Software\\Calvane\\Banners";
inline constexpr wchar_t kSearch[] = L"Software\\Calvane\\Search";

inline constexpr int kWrites = 9 + 16 + 18 + 3;

struct Default {
    const wchar_t* key;
    const wchar_t* name;
    std::wstring text;
};

// In the order of writing.
std::vector<Default> Defaults();

// As RegistryWatch writes the complete sequence down, the first key that is created being the firstKey-th
// handle.
std::vector<std::string> WritesOf(const std::vector<Default>& defaults, size_t firstKey);

// Every default is there, as text without a terminator; what else there is does not matter, or does.
void CheckAllDefaults(const TestHive& hive);
void CheckExactlyTheDefaults(const TestHive& hive);
