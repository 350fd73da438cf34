#include "platform/controls/text_box.h"

#include <algorithm>

#include "platform/guard.h"

void TextBox::Select(int start, int length) {
    const int end = std::min(start + length, static_cast<int>(Send(WM_GETTEXTLENGTH)));
    Send(EM_SETSEL, static_cast<WPARAM>(start), end);
    Send(EM_SCROLLCARET);
}

// An edit control reports its changes to its parent, but not its keys.
void TextBox::OnAttached() {
    if (KeyUp) SetWindowSubclass(Hwnd(), Procedure, 0, reinterpret_cast<DWORD_PTR>(this));
}

LRESULT CALLBACK TextBox::Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                    DWORD_PTR self) {
    const LRESULT result = DefSubclassProc(hwnd, message, wParam, lParam);
    // With Alt or F10 the release comes as a system key's.
    if (message == WM_KEYUP || message == WM_SYSKEYUP)
        Guarded([&] { Raise(reinterpret_cast<TextBox*>(self)->KeyUp); });
    if (message == WM_NCDESTROY) RemoveWindowSubclass(hwnd, Procedure, 0);
    return result;
}
