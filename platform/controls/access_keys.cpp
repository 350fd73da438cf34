#include "platform/controls/access_keys.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

struct Search {
    std::wstring key;
    std::vector<HWND> found;
};

std::wstring InLowerCase(std::wstring text) {
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// Captions of buttons are short; two ampersands stand for one that is shown.
std::wstring AccessKeyOf(HWND button) {
    wchar_t caption[128] = L"";
    const int length = GetWindowTextW(button, caption, static_cast<int>(std::size(caption)));
    for (int i = 0; i + 1 < length; ++i) {
        if (caption[i] != L'&') continue;
        if (caption[i + 1] != L'&') return InLowerCase(std::wstring(1, caption[i + 1]));
        ++i;
    }
    return {};
}

BOOL CALLBACK Collect(HWND window, LPARAM parameter) {
    Search& search = *reinterpret_cast<Search*>(parameter);
    const bool isButton = (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) != 0;
    if (isButton && IsWindowVisible(window) && IsWindowEnabled(window) && AccessKeyOf(window) == search.key)
        search.found.push_back(window);
    return TRUE;
}

}  // namespace

bool FocusNextOfAccessKey(HWND dialog, wchar_t key) {
    Search search{InLowerCase(std::wstring(1, key)), {}};
    EnumChildWindows(dialog, Collect, reinterpret_cast<LPARAM>(&search));
    const std::vector<HWND>& buttons = search.found;
    if (buttons.size() < 2) return false;
    const auto focused = std::find(buttons.begin(), buttons.end(), GetFocus());
    const bool isLast = focused == buttons.end() || focused + 1 == buttons.end();
    const HWND next = isLast ? buttons.front() : *(focused + 1);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    return true;
}
