// Plays the user of a modal dialog, from within the dialog's own message loop.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/other_process.h"

// Waits for the next dialog that this thread shows and runs one step after the other in it; messages that a
// step posts are handled before the next one runs. A dialog that is still open some seconds after the last
// step, or that never came, is a failure of the test; the former is closed. One at a time.
class DialogScript {
public:
    using Step = std::function<void(HWND dialog)>;

    explicit DialogScript(std::vector<Step> steps);
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;
    ~DialogScript();

private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);
    void Advance();

    static DialogScript* s_active;
    const std::vector<Step> m_steps;
    size_t m_next = 0;
    HWND m_dialog = nullptr;
    DWORD m_lastStep = 0;
    UINT_PTR m_timer = 0;
};

// Steps and what steps are made of.
inline void ClickButton(HWND dialog, int id) {
    SendDlgItemMessageW(dialog, id, BM_CLICK, 0, 0);
}
// Replaces the whole text, as pasting over it would.
void TypeText(HWND dialog, int id, const std::wstring& text);
void TypeKeys(HWND dialog, int id, const std::wstring& characters);  // one key after the other, at the caret
void PostKey(UINT virtualKey);  // to the control with the focus; for the dialog's own loop
inline std::wstring TextIn(HWND dialog, int id) {
    return ShownText(GetDlgItem(dialog, id));
}
inline int FocusedId() {
    return GetDlgCtrlID(GetFocus());
}

// The selected part of a text: its ends, as MAKELRESULT puts them together.
inline LRESULT SelectionIn(HWND dialog, int id) {
    return SendDlgItemMessageW(dialog, id, EM_GETSEL, 0, 0);
}
