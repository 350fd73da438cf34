#include "tests/support/message_recorder.h"

MessageRecorder* MessageRecorder::s_active = nullptr;

MessageRecorder::MessageRecorder() : m_patch("user32.dll", "MessageBoxW", &Show) {
    s_active = this;
}

MessageRecorder::~MessageRecorder() {
    s_active = nullptr;
}

int WINAPI MessageRecorder::Show(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
    s_active->messages.push_back({owner, text, title, type});
    return IDOK;
}
