// The first-run defaults as they must be, spelled out apart from the program.
#pragma once

#include <string>
#include <vector>

#include "tests/support/registry_calls.h"

inline constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
inline constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
inline constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
inline constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";
inline constexpr char kRun[] = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr char kRunEntry[] = "Calvane Config Manager";

struct Default {
    const char* key;
    std::string name;
    std::string text;
};

// In the order of writing; serverDirectory: where the manager's program lies.
std::vector<Default> FirstRunDefaults(const std::string& serverDirectory);

// A value that is text.
inline StoredValue Text(const std::string& bytes) {
    return {REG_SZ, bytes};
}
