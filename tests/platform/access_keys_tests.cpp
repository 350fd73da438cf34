#include <doctest.h>

#include <windows.h>

#include "platform/controls/access_keys.h"

namespace {

struct Buttons {
    ~Buttons() { DestroyWindow(dialog); }

    HWND Add(const wchar_t* caption, const wchar_t* windowClass = L"BUTTON", DWORD style = WS_VISIBLE) const {
        return CreateWindowExW(0, windowClass, caption, WS_CHILD | WS_TABSTOP | style, 0, 0, 50, 20, dialog,
                               nullptr, nullptr, nullptr);
    }

    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 100, nullptr,
                                        nullptr, nullptr, nullptr);
};

}  // namespace

TEST_CASE_FIXTURE(Buttons, "the focus goes round the buttons that share an access key, whatever its case") {
    const HWND first = Add(L"&Clear");
    Add(L"&OK");
    const HWND second = Add(L"Dis&card");
    const HWND third = Add(L"This && that: &Close");
    SetFocus(second);
    for (const HWND next : {third, first, second, third}) {
        CHECK(FocusNextOfAccessKey(dialog, next == first ? L'C' : L'c'));
        CHECK(GetFocus() == next);
    }
}

TEST_CASE_FIXTURE(Buttons, "an access key of one button, or of none, is left to the dialog manager") {
    const HWND other = Add(L"&Other");
    Add(L"&Clear");
    Add(L"&Cancel", L"BUTTON", 0);
    Add(L"&Close", L"BUTTON", WS_VISIBLE | WS_DISABLED);
    Add(L"&Copy", L"EDIT");
    Add(L"R&&&D");
    Add(L"R&&c");
    Add(L"none&");
    SetFocus(other);
    for (const wchar_t key : {L'c', L'o', L'd', L'&', L'x'}) {
        CAPTURE(key);
        CHECK_FALSE(FocusNextOfAccessKey(dialog, key));
        CHECK(GetFocus() == other);
    }
}
