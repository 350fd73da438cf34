#include "tests/support/dialog_script.h"

#include <doctest.h>

#include "tests/support/message_pump.h"

namespace {

constexpr UINT kTickMs = 10;

BOOL CALLBACK FindDialog(HWND hwnd, LPARAM found) {
    if (!IsWindowVisible(hwnd) || GetWindow(hwnd, GW_OWNER) == nullptr || ClassOf(hwnd) != L"#32770")
        return TRUE;
    *reinterpret_cast<HWND*>(found) = hwnd;
    return FALSE;
}

LPARAM KeyData(bool released) {
    return released ? static_cast<LPARAM>(0xC0000001) : 1;
}

}  // namespace

DialogScript* DialogScript::s_active = nullptr;

DialogScript::DialogScript(std::vector<Step> steps) : m_steps(std::move(steps)) {
    s_active = this;
    m_timer = SetTimer(nullptr, 0, kTickMs, Tick);
}

DialogScript::~DialogScript() {
    KillTimer(nullptr, m_timer);
    s_active = nullptr;
    CHECK_MESSAGE(m_next == m_steps.size(),
                  "the dialog was closed or never shown before its script was over");
}

void CALLBACK DialogScript::Tick(HWND, UINT, UINT_PTR, DWORD) {
    if (s_active != nullptr) s_active->Advance();
}

void DialogScript::Advance() {
    if (m_dialog == nullptr) {
        EnumThreadWindows(GetCurrentThreadId(), FindDialog, reinterpret_cast<LPARAM>(&m_dialog));
        if (m_dialog == nullptr) return;
    }
    if (m_next < m_steps.size()) {
        m_lastStep = GetTickCount();
        m_steps[m_next++](m_dialog);
    } else if (IsWindow(m_dialog) && GetTickCount() - m_lastStep > kPatience) {
        FAIL_CHECK("the dialog did not close");
        EndDialog(m_dialog, 0);
    }
}

void TypeText(HWND dialog, int id, const std::wstring& text) {
    SendDlgItemMessageW(dialog, id, EM_SETSEL, 0, -1);
    SendDlgItemMessageW(dialog, id, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

void TypeKeys(HWND dialog, int id, const std::wstring& characters) {
    const HWND box = GetDlgItem(dialog, id);
    for (const wchar_t character : characters) {
        const auto key = static_cast<WPARAM>(LOBYTE(VkKeyScanW(character)));
        SendMessageW(box, WM_KEYDOWN, key, KeyData(false));
        SendMessageW(box, WM_CHAR, character, KeyData(false));
        SendMessageW(box, WM_KEYUP, key, KeyData(true));
    }
}

void PostKey(UINT virtualKey) {
    PostMessageW(GetFocus(), WM_KEYDOWN, virtualKey, KeyData(false));
    PostMessageW(GetFocus(), WM_KEYUP, virtualKey, KeyData(true));
}
