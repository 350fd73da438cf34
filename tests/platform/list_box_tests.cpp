#include "platform/controls/list_box.h"

#include <doctest.h>

#include <string>

#include "platform/clipboard.h"
#include "tests/support/control_font.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_window.h"

namespace {

struct ListPage {
    ListPage() { ShowWindow(window.Hwnd(), SW_SHOW); }

    // How far the list scrolls sideways.
    int Extent() const { return static_cast<int>(SendMessageW(list.Hwnd(), LB_GETHORIZONTALEXTENT, 0, 0)); }

    // Whether the whole text comes into sight and little else does.
    bool Fits(const std::wstring& text) const {
        const LONG width = SizeOfText(list.Hwnd(), text).cx;
        return Extent() > width && Extent() < width + 50;
    }

    void Key(wchar_t character) const { SendMessageW(list.Hwnd(), WM_CHAR, character, 1); }

    ListBox list{L"list", 100};
    TestWindow window{{&list}};
};

constexpr wchar_t kCopy = 3;  // what Ctrl+C types

std::wstring Clipboard(HWND owner) {
    REQUIRE(OpenClipboard(owner));
    std::wstring text;
    if (const HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
        text = static_cast<const wchar_t*>(GlobalLock(memory));
        GlobalUnlock(memory);
    }
    CloseClipboard();
    return text;
}

const std::wstring kLong = L"http://www.example.com/" + std::wstring(300, L'a');
const std::wstring kLonger = kLong + std::wstring(100, L'W');

}  // namespace

TEST_CASE_FIXTURE(ListPage, "a list scrolls sideways as far as its widest row is wide, in any font") {
    list.AddItem(kLong);
    CHECK(Fits(kLong));
    list.AddItem(L"short");
    CHECK(Fits(kLong));
    list.AddItem(kLonger, 0);
    CHECK(Fits(kLonger));
    list.RemoveItem(0);
    CHECK(Fits(kLong));
    list.RemoveItem(1);
    CHECK(Fits(kLong));
    list.RemoveItem(0);
    CHECK(Extent() == 0);
    list.AddItem(kLonger);
    list.Clear();
    CHECK(Extent() == 0);
    list.AddItem(kLong);
    CHECK(Fits(kLong));

    const int before = Extent();
    LOGFONTW description{};
    description.lfHeight = -40;
    lstrcpyW(description.lfFaceName, L"Tahoma");
    const HFONT large = CreateFontIndirectW(&description);
    SendMessageW(list.Hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(large), TRUE);
    CHECK(Extent() > before * 3 / 2);
    CHECK(Extent() > SizeOfText(list.Hwnd(), kLong).cx);
    window.Destroy();
    DeleteObject(large);
}

TEST_CASE_FIXTURE(ListPage, "a list of many rows is measured without asking the window for each") {
    {
        const RedrawPause pause(list);
        list.AddItem(kLonger);
        int messages = 0;
        const ImportFake<"SendMessageW", decltype(&SendMessageW)> send{
            "user32.dll", [&](HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
                ++messages;
                return send.Original(hwnd, message, wParam, lParam);
            }};
        for (int i = 0; i < 1000; ++i)
            list.AddItem(kLong + std::to_wstring(i));
        CHECK(messages == 1000);
    }
    CHECK(Fits(kLonger));
}

TEST_CASE_FIXTURE(
    ListPage,
    "Ctrl+C, and no other key, copies the selected row as it stands, if nobody holds the clipboard") {
    const std::wstring text = L"http://\x43f\x440\x438\x43c\x435\x440.example/\x4e00";
    list.AddItem(L"other");
    list.AddItem(text);
    CopyToClipboard(window.Hwnd(), L"before");
    Key(kCopy);
    CHECK(Clipboard(window.Hwnd()) == L"before");
    list.ListIndex(1);
    Key(L'c');
    CHECK(Clipboard(window.Hwnd()) == L"before");
    bool isEmptied = false;
    {
        const ImportFake<"OpenClipboard", decltype(&OpenClipboard)> held{"user32.dll",
                                                                         [](HWND) { return FALSE; }};
        const ImportFake<"EmptyClipboard", decltype(&EmptyClipboard)> emptied{
            "user32.dll", [&] { return isEmptied = true; }};
        Key(kCopy);
    }
    CHECK_FALSE(isEmptied);
    CHECK(Clipboard(window.Hwnd()) == L"before");
    Key(kCopy);
    CHECK(Clipboard(window.Hwnd()) == text);
    CHECK(list.ListIndex() == 1);
}

TEST_CASE_FIXTURE(
    ListPage,
    "a list box refuses rows that are none, and keeps the selected one, also when another one is "
    "removed; its own removal leaves none selected") {
    for (const wchar_t* const row : {L"a", L"b", L"c", L"d"})
        list.AddItem(row);
    list.ListIndex(2);
    int clicks = 0;
    list.Click = [&] { ++clicks; };
    for (const int row : {-2, 4}) {
        CAPTURE(row);
        CHECK(ErrorOf([&] { list.ListIndex(row); }) == HresultOf(ErrorNumber::InvalidPropertyValue));
        CHECK(list.ListIndex() == 2);
    }
    list.RemoveItem(3);
    CHECK(list.ListIndex() == 2);
    list.RemoveItem(0);
    CHECK(list.List(list.ListIndex()) == L"c");
    CHECK(clicks == 0);
    list.ListIndex(-1);
    CHECK(list.ListIndex() == -1);
    CHECK(clicks == 1);
    list.ListIndex(1);
    list.RemoveItem(1);
    CHECK(list.ListIndex() == -1);
}
