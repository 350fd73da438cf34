#include <windows.h>

#include <string>
#include <vector>

#include "app/resource.h"
#include "tests/options/about_page.h"
#include "tests/support/message_pump.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

TEST_CASE("an address is opened by the shell as it stands, and the result does not matter") {
    SettingsWindow page;
    Browser browser;
    page.aboutPage.OpenAddress(L"http://www.calvane.example/\u00e4?a b");
    REQUIRE(browser.opened.size() == 1);
    const Opened& opened = browser.opened[0];
    CHECK(opened.owner == nullptr);
    CHECK(opened.verb == "open");
    CHECK(opened.file == ToAnsi(L"http://www.calvane.example/\u00e4?a b"));
    CHECK_FALSE(opened.hasParameters);
    CHECK_FALSE(opened.hasDirectory);
    CHECK(opened.show == 1);
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE("the link and the logo open the link's caption, so that changing it changes the target") {
    SettingsWindow page;
    Browser browser;
    page.lblNavSite.Caption(kAddress);
    page.aboutPage.lblNavSite_Click();
    page.lblNavSite.Caption(L"http://other.example/");
    page.aboutPage.imgLogo_Click();
    REQUIRE(browser.opened.size() == 2);
    CHECK(browser.opened[0].file == "http://www.calvane.example/");
    CHECK(browser.opened[1].file == "http://other.example/");
}

TEST_CASE("the link is pressed by the mouse, by Enter and by Space, once each") {
    SettingsWindow page;
    Browser browser;
    page.lblNavSite.Caption(kAddress);
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    UpdateWindow(page.window.Hwnd());
    const HWND link = page.lblNavSite.Hwnd();
    page.lblNavSite.SetFocus();

    const LPARAM point = MAKELPARAM(10, 6);
    SendMessageW(link, WM_LBUTTONDOWN, MK_LBUTTON, point);
    SendMessageW(link, WM_LBUTTONUP, 0, point);
    CHECK(browser.opened.size() == 1);

    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
        CAPTURE(key);
        browser.opened.clear();
        PostMessageW(link, WM_KEYDOWN, key, 1);
        PostMessageW(link, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (IsDialogMessageW(page.window.Hwnd(), &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        CHECK(browser.opened.size() == 1);
    }
}

TEST_CASE("a key that is held down presses the link once") {
    SettingsWindow page;
    Browser browser;
    page.lblNavSite.Caption(kAddress);
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    page.lblNavSite.SetFocus();
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
        CAPTURE(key);
        browser.opened.clear();
        SendMessageW(page.lblNavSite.Hwnd(), WM_KEYDOWN, key, 1);
        for (int repeat = 0; repeat < 5; ++repeat) {
            SendMessageW(page.lblNavSite.Hwnd(), WM_KEYDOWN, key, (static_cast<LPARAM>(KF_REPEAT) << 16) | 1);
        }
        CHECK(browser.opened.size() == 1);
    }
}

TEST_CASE("the link is written in the system's colour for links, over the system's colour for windows") {
    SettingsWindow page;
    page.lblNavSite.Caption(kAddress);
    Resize(page.lblNavSite, 160, 20);
    const Drawing drawing(page.lblNavSite.Hwnd(), kBefore);
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

TEST_CASE("the pointer over the link is a hand") {
    SettingsWindow page;
    page.lblNavSite.Caption(kAddress);
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    UpdateWindow(page.window.Hwnd());
    SetWindowPos(page.lblNavSite.Hwnd(), HWND_TOP, 0, 0, 150, 24, 0);
    UpdateWindow(page.lblNavSite.Hwnd());
    POINT point{10, 6};
    ClientToScreen(page.lblNavSite.Hwnd(), &point);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    SetCursorPos(point.x, point.y);
    // The control asks where the pointer was at the last message, so that message must have come.
    const bool isHand = PumpUntil([&] {
        const HWND link = page.lblNavSite.Hwnd();
        SendMessageW(link, WM_SETCURSOR, reinterpret_cast<WPARAM>(link), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        return GetCursor() == LoadCursorW(nullptr, IDC_HAND);
    });
    CHECK(isHand);
}

TEST_CASE("the tab key reaches the link and passes the logo by") {
    SettingsWindow page;
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    bool seesLink = false;
    bool seesLogo = false;
    HWND current = nullptr;
    for (size_t i = 0; i <= page.controls.size(); ++i) {
        current = GetNextDlgTabItem(page.window.Hwnd(), current, FALSE);
        seesLink = seesLink || current == page.lblNavSite.Hwnd();
        seesLogo = seesLogo || current == page.imgLogo.Hwnd();
    }
    CHECK(seesLink);
    CHECK_FALSE(seesLogo);
}

TEST_CASE("the caption of the link is text without markup, set before or after its window is made") {
    SettingsWindow page;
    CHECK(page.lblNavSite.Caption().empty());
    page.lblNavSite.Caption(kAddress);
    CHECK(page.lblNavSite.Caption() == kAddress);

    LinkLabel link(L"lblLink", 1);
    CHECK(link.Caption().empty());
    link.Attach(CreateWindowExW(0, WC_LINK, kAddress, WS_CHILD, 0, 0, 100, 20, page.window.Hwnd(), nullptr,
                                GetModuleHandleW(nullptr), nullptr));
    CHECK(link.Caption() == kAddress);
    DestroyWindow(link.Hwnd());
}
