#include <windows.h>
#include <olectl.h>

#include <string>
#include <vector>

#include "app/resource.h"
#include "platform/automation_error.h"
#include "tests/options/about_page.h"
#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// Decodes pictures, or refuses to, and counts how often that was asked for.
struct Decoder {
    Decoder() { s_current = this; }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { s_current = nullptr; }

    static HRESULT WINAPI Load(LPSTREAM stream, LONG size, BOOL runMode, REFIID id, LPVOID* picture) {
        ++s_current->count;
        if (s_current->refuses) return CTL_E_INVALIDPICTURE;
        return s_current->m_patch.Original<decltype(&OleLoadPicture)>()(stream, size, runMode, id, picture);
    }

    int count = 0;
    bool refuses = false;

private:
    static inline Decoder* s_current = nullptr;
    ImportPatch m_patch{"oleaut32.dll", "OleLoadPicture", &Load};
};

// The smallest rectangle around everything that is not background.
RECT InkOf(const Drawing& drawing, SIZE size, COLORREF background) {
    RECT ink{size.cx, size.cy, 0, 0};
    for (LONG y = 0; y < size.cy; ++y) {
        for (LONG x = 0; x < size.cx; ++x) {
            if (drawing.At(x, y) == background) continue;
            ink.left = std::min(ink.left, x);
            ink.top = std::min(ink.top, y);
            ink.right = std::max(ink.right, x + 1);
            ink.bottom = std::max(ink.bottom, y + 1);
        }
    }
    return ink;
}

}  // namespace

TEST_CASE("a click on the logo opens the page, and the pointer over it is a hand") {
    SettingsWindow page;
    Browser browser;
    page.lblNavSite.Caption(kAddress);
    SendMessageW(page.imgLogo.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MiddleOf(page.imgLogo.Hwnd()));
    SendMessageW(page.imgLogo.Hwnd(), WM_LBUTTONUP, 0, MiddleOf(page.imgLogo.Hwnd()));
    REQUIRE(browser.opened.size() == 1);
    CHECK(browser.opened[0].file == "http://www.calvane.example/");

    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    CHECK(SendMessageW(page.imgLogo.Hwnd(), WM_SETCURSOR, reinterpret_cast<WPARAM>(page.imgLogo.Hwnd()),
                       MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)) != 0);
    CHECK(GetCursor() == LoadCursorW(nullptr, IDC_HAND));
}

TEST_CASE("without a picture the logo shows the background of its parent") {
    SettingsWindow page;
    Resize(page.imgLogo, 96, 96);
    const Drawing drawing(page.imgLogo.Hwnd(), kBefore);
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    CHECK(drawing.At(0, 0) == background);
    CHECK(drawing.At(95, 95) == background);
    CHECK(drawing.At(48, 48) == background);
}

TEST_CASE("a logo of the control's size is drawn in its own pixels, with the parent's background behind it") {
    SettingsWindow page;
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    page.imgLogo.Picture(IDG_LOGO_96);
    Resize(page.imgLogo, 96, 96);
    const Drawing exact(page.imgLogo.Hwnd(), kBefore);
    Resize(page.imgLogo, 104, 100);
    const Drawing roomy(page.imgLogo.Hwnd(), kBefore);
    int ink = 0;
    int same = 0;
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 96; ++x) {
            if (exact.At(x, y) != background) ++ink;
            if (exact.At(x, y) == roomy.At(x + 4, y + 2)) ++same;
            REQUIRE(exact.At(x, y) != kBefore);
        }
    }
    CHECK(ink > 1000);
    CHECK(same == 96 * 96);
    CHECK(exact.At(0, 0) == background);  // a transparent corner
}

TEST_CASE("a logo of another size is scaled to fill the control in its proportions") {
    SettingsWindow page;
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    page.imgLogo.Picture(IDG_LOGO_192);
    Resize(page.imgLogo, 200, 192);
    const RECT full = InkOf(Drawing(page.imgLogo.Hwnd(), kBefore), {200, 192}, background);
    Resize(page.imgLogo, 100, 48);
    const RECT quarter = InkOf(Drawing(page.imgLogo.Hwnd(), kBefore), {100, 48}, background);
    CHECK(std::abs((full.right - full.left) / 4 - (quarter.right - quarter.left)) <= 2);
    CHECK(std::abs((full.bottom - full.top) / 4 - (quarter.bottom - quarter.top)) <= 2);
    CHECK(std::abs((quarter.left + quarter.right) / 2 - 50) <= 2);
}

TEST_CASE("a picture is decoded once, and not before it is drawn") {
    SettingsWindow page;
    Resize(page.imgLogo, 96, 96);
    const Decoder decoder;
    page.imgLogo.Picture(IDG_LOGO_192);
    page.imgLogo.Picture(IDG_LOGO_96);
    CHECK(decoder.count == 0);
    const COLORREF middle = Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48);
    CHECK(decoder.count == 1);
    CHECK(Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48) == middle);
    CHECK(decoder.count == 1);
    CHECK(middle != GetSysColor(COLOR_3DFACE));
}

TEST_CASE("a picture that cannot be decoded leaves the background, and is not tried again") {
    SettingsWindow page;
    Resize(page.imgLogo, 96, 96);
    Decoder decoder;
    decoder.refuses = true;
    page.imgLogo.Picture(IDG_LOGO_96);
    for (int drawings = 0; drawings < 3; ++drawings)
        CHECK(Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48) == GetSysColor(COLOR_3DFACE));
    CHECK(decoder.count == 1);
}

TEST_CASE("a picture that is not there is an error and leaves the one before it") {
    SettingsWindow page;
    Resize(page.imgLogo, 96, 96);
    page.imgLogo.Picture(IDG_LOGO_96);
    const COLORREF middle = Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48);
    CHECK_THROWS_AS(page.imgLogo.Picture(9999), AutomationError);
    CHECK(Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48) == middle);
}

TEST_CASE("the place of a picture in its box") {
    struct Row {
        SIZE picture;
        SIZE box;
        RECT bounds;
    };
    const Row rows[] = {
        {{96, 96}, {96, 96}, {0, 0, 96, 96}},       {{96, 96}, {104, 100}, {4, 2, 100, 98}},
        {{96, 96}, {119, 119}, {11, 11, 107, 107}}, {{96, 96}, {120, 120}, {0, 0, 120, 120}},
        {{96, 96}, {95, 95}, {0, 0, 95, 95}},       {{96, 48}, {200, 200}, {0, 50, 200, 150}},
        {{48, 96}, {200, 200}, {50, 0, 150, 200}},  {{1000, 1}, {10, 10}, {0, 4, 10, 5}},
        {{0, 0}, {10, 10}, {0, 0, 0, 0}},           {{10, 10}, {0, 10}, {0, 0, 0, 0}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.picture.cx);
        CAPTURE(row.box.cx);
        const RECT bounds = PictureBounds(row.picture, row.box);
        CHECK(EqualRect(&bounds, &row.bounds) != 0);
    }
}

TEST_CASE("the logo is taken that was drawn for the screen, else the next finer, else the finest") {
    const std::initializer_list<ImageBox::Resource> resources = {{144, 3}, {96, 1}, {192, 4}, {120, 2}};
    CHECK(ResourceForDpi(resources, 96) == 1);
    CHECK(ResourceForDpi(resources, 120) == 2);
    CHECK(ResourceForDpi(resources, 144) == 3);
    CHECK(ResourceForDpi(resources, 192) == 4);
    CHECK(ResourceForDpi(resources, 72) == 1);
    CHECK(ResourceForDpi(resources, 100) == 2);
    CHECK(ResourceForDpi(resources, 168) == 4);
    CHECK(ResourceForDpi(resources, 288) == 4);
}

TEST_CASE("the logo of the screen's resolution is the one that is shown") {
    SettingsWindow page;
    Resize(page.imgLogo, 96, 96);
    page.imgLogo.Picture(IDG_LOGO_96);
    const COLORREF middle = Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48);
    page.imgLogo.Picture({{96, IDG_LOGO_96}, {192, IDG_LOGO_192}});
    CHECK(Drawing(page.imgLogo.Hwnd(), kBefore).At(48, 48) == middle);
}
