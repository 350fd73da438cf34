// The logo of the About
#include <windows.h>
#include <olectl.h>

#include "app/resource.h"
#include "platform/automation_error.h"
#include "tests/options/about_page.h"
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

}  // namespace

TEST_CASE_FIXTURE(AboutPageFixture, "the pointer over the logo is a hand") {
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    CHECK(SendMessageW(imgLogo.Hwnd(), WM_SETCURSOR, reinterpret_cast<WPARAM>(imgLogo.Hwnd()),
                       MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)) != 0);
    CHECK(GetCursor() == LoadCursorW(nullptr, IDC_HAND));
}

TEST_CASE_FIXTURE(AboutPageFixture, "without a picture the logo shows the background of its parent") {
    Resize(imgLogo, 96, 96);
    const Drawing drawing(imgLogo);
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    CHECK(drawing.At(0, 0) == background);
    CHECK(drawing.At(95, 95) == background);
    CHECK(drawing.At(48, 48) == background);
}

TEST_CASE_FIXTURE(
    AboutPageFixture,
    "a logo of the control's size is drawn in its own pixels, with the parent's background behind it") {
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    imgLogo.Picture(IDG_LOGO_96);
    Resize(imgLogo, 96, 96);
    const Drawing exact(imgLogo);
    Resize(imgLogo, 104, 100);
    const Drawing roomy(imgLogo);
    int ink = 0;
    int same = 0;
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 96; ++x) {
            if (exact.At(x, y) != background) ++ink;
            if (exact.At(x, y) == roomy.At(x + 4, y + 2)) ++same;
            REQUIRE(exact.At(x, y) != Drawing::kBefore);
        }
    }
    CHECK(ink > 1000);
    CHECK(same == 96 * 96);
    CHECK(exact.At(0, 0) == background);  // a transparent corner
}

TEST_CASE_FIXTURE(
    AboutPageFixture,
    "a picture is decoded once, not before it is drawn; one that cannot be decoded leaves the background; "
    "one that is not there is an error and leaves the one before it") {
    Resize(imgLogo, 96, 96);
    Decoder decoder;
    SUBCASE("one that can be decoded") {
        imgLogo.Picture(IDG_LOGO_192);
        imgLogo.Picture(IDG_LOGO_96);
        CHECK(decoder.count == 0);
        const COLORREF middle = Drawing(imgLogo).At(48, 48);
        CHECK(middle != GetSysColor(COLOR_3DFACE));
        CHECK_THROWS_AS(imgLogo.Picture(9999), AutomationError);
        CHECK(Drawing(imgLogo).At(48, 48) == middle);
    }
    SUBCASE("one that cannot") {
        decoder.refuses = true;
        imgLogo.Picture(IDG_LOGO_96);
        for (int drawings = 0; drawings < 3; ++drawings)
            CHECK(Drawing(imgLogo).At(48, 48) == GetSysColor(COLOR_3DFACE));
    }
    CHECK(decoder.count == 1);
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

TEST_CASE("the largest logo is taken that fits its place, else the smallest") {
    const std::initializer_list<ImageBox::Resource> resources = {{144, 3}, {96, 1}, {192, 4}, {120, 2}};
    CHECK(ImageBox::ResourceFor(resources, 96) == 1);
    CHECK(ImageBox::ResourceFor(resources, 119) == 1);
    CHECK(ImageBox::ResourceFor(resources, 120) == 2);
    CHECK(ImageBox::ResourceFor(resources, 150) == 3);
    CHECK(ImageBox::ResourceFor(resources, 192) == 4);
    CHECK(ImageBox::ResourceFor(resources, 500) == 4);
    CHECK(ImageBox::ResourceFor(resources, 72) == 1);
    CHECK(ImageBox::ResourceFor(resources, 0) == 1);
}

TEST_CASE_FIXTURE(AboutPageFixture, "the logo that fits its place is the one that is shown") {
    Resize(imgLogo, 96, 96);
    imgLogo.Picture(IDG_LOGO_96);
    const COLORREF middle = Drawing(imgLogo).At(48, 48);
    imgLogo.Picture({{96, IDG_LOGO_96}, {192, IDG_LOGO_192}});
    CHECK(Drawing(imgLogo).At(48, 48) == middle);
}
