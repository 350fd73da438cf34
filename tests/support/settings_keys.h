// The keys of the store, as the registry in memory knows them.
#pragma once

#include <string>

#include "tests/support/registry_calls.h"

inline constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
inline constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
inline constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
inline constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";
inline constexpr char kRun[] = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// A value that is text.
inline StoredValue Text(const std::string& bytes) {
    return {REG_SZ, bytes};
}
