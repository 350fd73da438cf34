#include "platform/controls/link_label.h"

#include "platform/guard.h"

namespace {

constexpr std::wstring_view kOpening = L"<a>";
constexpr std::wstring_view kClosing = L"</a>";

}  // namespace

std::wstring LinkLabel::Caption() const {
    std::wstring text = WindowText();
    if (text.starts_with(kOpening)) text.erase(0, kOpening.size());
    if (text.ends_with(kClosing)) text.erase(text.size() - kClosing.size());
    return text;
}

void LinkLabel::Caption(const std::wstring& caption) {
    WindowText(std::wstring(kOpening).append(caption).append(kClosing));
}

LRESULT LinkLabel::OnNotify(const NMHDR& header) {
    if (header.code == static_cast<UINT>(NM_CLICK) || header.code == static_cast<UINT>(NM_RETURN)) {
        Raise(Click);
    }
    return 0;
}

// The dialog resource holds the caption alone, as it does for other labels.
void LinkLabel::OnAttached() {
    Caption(Caption());
    SetWindowSubclass(Hwnd(), Procedure, 0, reinterpret_cast<DWORD_PTR>(this));
}

// The control reports Enter to its parent, but not Space. A key that is held down presses the link once.
LRESULT CALLBACK LinkLabel::Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                      DWORD_PTR self) {
    if (message == WM_NCDESTROY) RemoveWindowSubclass(hwnd, Procedure, 0);
    if (message == WM_KEYDOWN && (wParam == VK_SPACE || wParam == VK_RETURN)) {
        const bool isHeldDown = (HIWORD(lParam) & KF_REPEAT) != 0;
        if (wParam == VK_SPACE && !isHeldDown) {
            Guarded([&] { Raise(reinterpret_cast<LinkLabel*>(self)->Click); });
        }
        if (wParam == VK_SPACE || isHeldDown) return 0;
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}
