// What the window of a test shows and remembers, taken from it, put into it and compared.
#pragma once

#include <string>
#include <vector>

#include "tests/support/registry_calls.h"

class SettingsWindow;

struct ListRow {
    std::wstring name;
    std::vector<std::wstring> fields;
    bool isUsed = false;
    bool operator==(const ListRow&) const = default;
};

// All that the options and lists of the window show and remember.
struct WindowState {
    short playSound = 0;
    short beep = 0;
    short extra = 0;
    std::wstring speed = L"6";
    std::wstring pause = L"5";
    std::wstring extraText;
    std::vector<std::wstring> exclude;
    std::vector<ListRow> banners;
    std::vector<ListRow> search;
    std::wstring pauseKey;
    std::wstring soundFile;
    std::wstring selectedMode;  // of the selected option button; empty where none is
    std::wstring mode;          // as last read or written
    bool canChooseSound = false;
    bool canTestSound = false;
    bool canApply = false;
    bool isLoading = false;
    bool operator==(const WindowState&) const = default;
};

WindowState StateOf(const SettingsWindow& window);
void Put(SettingsWindow& window, const WindowState& state);

// The members that differ, in words; empty where none does.
std::string Difference(const WindowState& actual, const WindowState& expected);
std::string Difference(const RegistryContents& actual, const RegistryContents& expected);
