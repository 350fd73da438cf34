// The window of a test over a registry in memory, and what either of them holds: put into it, taken from it
// and compared.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "tests/support/registry_calls.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

using NamedTexts = std::map<std::string, std::string, LessNoCase>;

// What controls show, by their names: a text; 1 or 0 of what is checked, and of a button that is enabled;
// each row of a list with a line feed behind it, "text\n" or "text|sub-item|...|x\n", the x only where it is
// checked. Also what the window remembers: m_strSoundFile, m_strStartupMode, and whether it is loading in
// m_bLoading.
struct WindowState : NamedTexts {
    WindowState(std::initializer_list<std::string> rows = {});  // "name=text"
};

WindowState StateOf(const SettingsWindow& window);
// Leaves what the state does not name.
void Put(SettingsWindow& window, const WindowState& state);

// A store of rows "key\name=text", or "name=text" in the Settings key, all of them texts.
RegistryContents StoreOf(const std::vector<std::string>& rows);

// A store and a window that differ in everything: every setting, three entries in each list and a neighbour
// of the Run value; the lists of the window are shorter. No text of the store is so short that a string
// object keeps it within itself.
RegistryContents UsualStore();
WindowState EditedWindow();

struct TransferPage : SettingsWindow {
    const WindowState designed = StateOf(*this);
    RegistryCalls registry{RegistryCalls::Of::Memory};
};

// The texts of a store by key and name, each with its type where that is no text's.
NamedTexts TextsOf(const RegistryContents& store);

// What differs, in words; empty where nothing does.
std::string Difference(const NamedTexts& actual, const NamedTexts& expected);
inline std::string Difference(const RegistryContents& actual, const RegistryContents& expected) {
    return Difference(TextsOf(actual), TextsOf(expected));
}
