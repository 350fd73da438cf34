// Closes message boxes at once and notes what they showed.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/import_fake.h"

struct MessageRecorder {
    struct Message {
        HWND owner;
        std::wstring text;
        std::wstring title;
        UINT type;
    };

    std::vector<Message> messages;
    const ImportFake<"MessageBoxW", decltype(&MessageBoxW)> box{
        "user32.dll", [this](HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
            messages.push_back({owner, text, title, type});
            return IDOK;
        }};
};
