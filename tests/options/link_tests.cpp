// The link of the About page, and the opening of an address.
#include <windows.h>

#include <string>

#include "tests/options/about_page.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

TEST_CASE_FIXTURE(AboutPageFixture,
                  "an address is opened by the shell as it stands, and the result does not matter") {
    const std::wstring address = L"http://www.calvane.example/\u00e4?a b";
    aboutPage.OpenAddress(address);
    REQUIRE(opened.size() == 1);
    CHECK(opened[0].owner == nullptr);
    CHECK(opened[0].verb == "open");
    CHECK(opened[0].file == ToAnsi(address));
    CHECK_FALSE(opened[0].hasParameters);
    CHECK_FALSE(opened[0].hasDirectory);
    CHECK(opened[0].show == 1);
    CHECK_FALSE(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link and the logo open the link's caption, so that changing it changes the target") {
    aboutPage.lblNavSite_Click();
    lblNavSite.Caption(L"http://other.example/");
    SendMessageW(imgLogo.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    SendMessageW(imgLogo.Hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    REQUIRE(opened.size() == 2);
    CHECK(opened[0].file == "http://www.calvane.example/");
    CHECK(opened[1].file == "http://other.example/");
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link is pressed by the mouse, by Enter and by Space, once each, held down or not") {
    ShowWindow(window.Hwnd(), SW_SHOW);
    UpdateWindow(window.Hwnd());
    const HWND link = lblNavSite.Hwnd();
    lblNavSite.SetFocus();
    const LPARAM point = MAKELPARAM(10, 6);
    SendMessageW(link, WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(link, WM_LBUTTONUP, 0, point);
    CHECK(opened.size() == 1);
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
        CAPTURE(key);
        opened.clear();
        PostMessageW(link, WM_KEYDOWN, key, 1);
        PostMessageW(link, WM_KEYDOWN, key, (static_cast<LPARAM>(KF_REPEAT) << 16) | 1);
        PostMessageW(link, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (IsDialogMessageW(window.Hwnd(), &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        CHECK(opened.size() == 1);
    }
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link is written in the system's colour for links, over the one for windows") {
    Resize(lblNavSite, 160, 20);
    const Drawing drawing(lblNavSite);
    int linkPixels = 0;
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 160; ++x) {
            const COLORREF pixel = drawing.At(x, y);
            if (pixel == GetSysColor(COLOR_HOTLIGHT) || pixel == GetSysColor(COLOR_HIGHLIGHT)) ++linkPixels;
        }
    }
    // The line under the text is as long as the text.
    CHECK(linkPixels > 100);
    CHECK(drawing.At(159, 19) == GetSysColor(COLOR_3DFACE));
}

TEST_CASE_FIXTURE(AboutPageFixture, "the pointer over the link is a hand") {
    ShowWindow(window.Hwnd(), SW_SHOW);
    UpdateWindow(window.Hwnd());
    const HWND link = lblNavSite.Hwnd();
    SetWindowPos(link, HWND_TOP, 0, 0, 150, 24, 0);
    UpdateWindow(link);
    POINT point{10, 6};
    ClientToScreen(link, &point);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    SetCursorPos(point.x, point.y);
    // The control asks where the pointer was at the last message, so that message must have come.
    CHECK(PumpUntil([&] {
        SendMessageW(link, WM_SETCURSOR, reinterpret_cast<WPARAM>(link), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        return GetCursor() == LoadCursorW(nullptr, IDC_HAND);
    }));
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "the caption of the link is text without markup, set before or after its window is made") {
    CHECK(lblNavSite.Caption().empty());
    lblNavSite.Caption(L"http://a");
    CHECK(lblNavSite.Caption() == L"http://a");
    LinkLabel link(L"lblLink", 1);
    CHECK(link.Caption().empty());
    link.Attach(CreateWindowExW(0, WC_LINK, L"http://b", WS_CHILD, 0, 0, 100, 20, window.Hwnd(), nullptr,
                                GetModuleHandleW(nullptr), nullptr));
    CHECK(link.Caption() == L"http://b");
    DestroyWindow(link.Hwnd());
}
