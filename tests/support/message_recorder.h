// Closes message boxes at once and notes what they showed.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time.
class MessageRecorder {
public:
    struct Message {
        HWND owner;
        std::wstring text;
        std::wstring title;
        UINT type;
    };

    MessageRecorder() { s_active = this; }
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    std::vector<Message> messages;

private:
    static int WINAPI Show(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
        s_active->messages.push_back({owner, text, title, type});
        return IDOK;
    }

    static inline MessageRecorder* s_active = nullptr;
    const ImportPatch m_patch{"user32.dll", "MessageBoxW", &Show};
};
