// Stores that somebody else has written, and what a manager shows of them.
#pragma once

#include "tests/window/test_manager.h"

// A store whose defaults count as written, although none are there.
struct Store {
    Store() {
        DeleteSettings();
        WriteSetting(L"Settings", L"First Time", L"");
    }

    static void Banner(int n, const wchar_t* name, const wchar_t* width, const wchar_t* height,
                       const wchar_t* use) {
        const std::wstring number = std::to_wstring(n);
        WriteSetting(L"Banners", number + L"Name", name);
        WriteSetting(L"Banners", number + L"Width", width);
        WriteSetting(L"Banners", number + L"Height", height);
        if (use != nullptr) WriteSetting(L"Banners", number + L"Use", use);
    }
};

inline bool IsChecked(Manager& manager, const wchar_t* name) {
    return SendMessageW(manager.Control(name), BM_GETCHECK, 0, 0) == BST_CHECKED;
}
