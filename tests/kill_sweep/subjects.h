// What is cut short: a first run, and an Apply that rewrites full lists by shorter ones.
#pragma once

#include <windows.h>

#include <string>

#include "tests/support/memory_registry.h"
#include "tests/support/settings_model.h"

inline constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
inline constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
inline constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
inline constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";
inline constexpr char kRun[] = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr char kRunEntry[] = "Calvane Config Manager";

// Keys and values of other programs, beside and between those of the manager.
RegistryContents Neighbours();

// A store with every setting and long lists, and the neighbours.
RegistryContents FullStore();

// Differs from FullStore in everything; its lists are shorter.
WindowState EditedWindow();

// All values below a key, by their paths; the paths of that key and its subkeys begin with root. Keys without
// values are left out.
void Walk(HKEY key, const std::string& root, RegistryContents& contents);

// The contents without keys that hold nothing.
RegistryContents WithoutEmptyKeys(RegistryContents contents);
