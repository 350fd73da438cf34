#include <doctest.h>

#include <windows.h>

#include "platform/controls/access_keys.h"

namespace {

class Buttons {
public:
    Buttons() {
        m_dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 100, nullptr, nullptr,
                                   nullptr, nullptr);
        REQUIRE(m_dialog != nullptr);
    }
    Buttons(const Buttons&) = delete;
    Buttons& operator=(const Buttons&) = delete;
    ~Buttons() { DestroyWindow(m_dialog); }

    HWND Add(const wchar_t* caption, const wchar_t* windowClass = L"BUTTON", DWORD style = WS_VISIBLE) {
        return CreateWindowExW(0, windowClass, caption, WS_CHILD | WS_TABSTOP | style, 0, 0, 50, 20, m_dialog,
                               nullptr, nullptr, nullptr);
    }
    bool Press(wchar_t key) const { return FocusNextOfAccessKey(m_dialog, key); }

private:
    HWND m_dialog;
};

}  // namespace

TEST_CASE("the focus goes round the buttons that share an access key, whatever its case") {
    Buttons buttons;
    const HWND first = buttons.Add(L"&Clear");
    buttons.Add(L"&OK");
    const HWND second = buttons.Add(L"Dis&card");
    const HWND third = buttons.Add(L"This && that: &Close");
    SetFocus(second);
    for (const HWND next : {third, first, second, third}) {
        CHECK(buttons.Press(next == first ? L'C' : L'c'));
        CHECK(GetFocus() == next);
    }
}

TEST_CASE("an access key of one button, or of none, is left to the dialog manager") {
    Buttons buttons;
    const HWND other = buttons.Add(L"&Other");
    buttons.Add(L"&Clear");
    buttons.Add(L"&Cancel", L"BUTTON", 0);
    buttons.Add(L"&Close", L"BUTTON", WS_VISIBLE | WS_DISABLED);
    buttons.Add(L"&Copy", L"EDIT");
    buttons.Add(L"R&&&D");
    buttons.Add(L"R&&c");
    buttons.Add(L"none&");
    SetFocus(other);
    for (const wchar_t key : {L'c', L'o', L'd', L'&', L'x'}) {
        CAPTURE(key);
        CHECK_FALSE(buttons.Press(key));
        CHECK(GetFocus() == other);
    }
}
