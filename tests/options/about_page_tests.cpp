// The About page: the link, the logo and the opening of an address.
#include <windows.h>
#include <olectl.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "app/resource.h"
#include "platform/automation_error.h"
#include "tests/support/import_fake.h"
#include "tests/support/message_pump.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// A window whose link shows an address. The shell has no program for any.
struct AboutPageFixture : SettingsWindow {
    AboutPageFixture() { lblNavSite.Caption(L"http://www.calvane.example/"); }

    void Show() const {
        ShowWindow(window.Hwnd(), SW_SHOW);
        UpdateWindow(window.Hwnd());
    }
    static void Resize(const Control& control, int width, int height) {
        SetWindowPos(control.Hwnd(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }
    static void Press(const Control& control) {
        SendMessageW(control.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 6));
        SendMessageW(control.Hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(10, 6));
    }

    std::vector<std::string> opened;
    const ImportFake<"ShellExecuteA", decltype(&ShellExecuteA)> shell{
        "shell32.dll",
        [this](HWND owner, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR directory, INT show) {
            CHECK(owner == nullptr);
            CHECK(std::string(verb) == "open");
            CHECK(parameters == nullptr);
            CHECK(directory == nullptr);
            CHECK(show == 1);
            opened.push_back(file);
            return reinterpret_cast<HINSTANCE>(SE_ERR_NOASSOC);
        }};
};

// What a control draws into its client area, over a colour of its own.
class Drawing {
public:
    static constexpr COLORREF kBefore = RGB(1, 254, 3);

    explicit Drawing(const Control& control) {
        RECT bounds;
        GetClientRect(control.Hwnd(), &bounds);
        const HDC screen = GetDC(nullptr);
        m_dc = CreateCompatibleDC(screen);
        m_bitmap = CreateCompatibleBitmap(screen, bounds.right, bounds.bottom);
        ReleaseDC(nullptr, screen);
        m_old = SelectObject(m_dc, m_bitmap);
        const HBRUSH brush = CreateSolidBrush(kBefore);
        FillRect(m_dc, &bounds, brush);
        DeleteObject(brush);
        SendMessageW(control.Hwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(m_dc), PRF_CLIENT);
    }
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;
    ~Drawing() {
        SelectObject(m_dc, m_old);
        DeleteObject(m_bitmap);
        DeleteDC(m_dc);
    }

    COLORREF At(int x, int y) const { return GetPixel(m_dc, x, y); }

private:
    HDC m_dc;
    HBITMAP m_bitmap;
    HGDIOBJ m_old;
};

}  // namespace

TEST_CASE_FIXTURE(AboutPageFixture,
                  "an address is opened by the shell as it stands, and the result does not matter") {
    const std::wstring address = L"http://www.calvane.example/\u00e4?a b";
    aboutPage.OpenAddress(address);
    CHECK(opened == std::vector<std::string>{ToAnsi(address)});
    CHECK_FALSE(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link and the logo open the link's caption, so that changing it changes the target") {
    Press(lblNavSite);
    lblNavSite.Caption(L"http://other.example/");
    Press(imgLogo);
    CHECK(opened == std::vector<std::string>{"http://www.calvane.example/", "http://other.example/"});
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link is pressed by Enter and by Space, once each, held down or not") {
    Show();
    const HWND link = lblNavSite.Hwnd();
    lblNavSite.SetFocus();
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

TEST_CASE_FIXTURE(AboutPageFixture, "the pointer over the link and the logo is a hand") {
    Show();
    for (const HWND control : {lblNavSite.Hwnd(), imgLogo.Hwnd()}) {
        SetWindowPos(control, HWND_TOP, 0, 0, 150, 24, 0);
        UpdateWindow(control);
        POINT point{10, 6};
        ClientToScreen(control, &point);
        SetCursor(LoadCursorW(nullptr, IDC_ARROW));
        SetCursorPos(point.x, point.y);
        // The link asks where the pointer was at the last message, so that message must have come.
        CHECK(PumpUntil([&] {
            SendMessageW(control, WM_SETCURSOR, reinterpret_cast<WPARAM>(control),
                         MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
            return GetCursor() == LoadCursorW(nullptr, IDC_HAND);
        }));
    }
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

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the logo is the one that fits its place, drawn in its own pixels, with the parent's "
                  "background behind it, "
                  "which without a picture is all that is drawn") {
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    Resize(imgLogo, 96, 96);
    const Drawing none(imgLogo);
    imgLogo.Picture(IDG_LOGO_96);
    const Drawing exact(imgLogo);
    imgLogo.Picture({{96, IDG_LOGO_96}, {192, IDG_LOGO_192}});
    Resize(imgLogo, 104, 100);
    const Drawing roomy(imgLogo);
    int ink = 0;
    int same = 0;
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 96; ++x) {
            if (exact.At(x, y) != background) ++ink;
            if (exact.At(x, y) == roomy.At(x + 4, y + 2)) ++same;
            REQUIRE(exact.At(x, y) != Drawing::kBefore);
            REQUIRE(none.At(x, y) == background);
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
    int decoded = 0;
    bool isRefused = false;
    const ImportFake<"OleLoadPicture", decltype(&OleLoadPicture)> decoder{
        "oleaut32.dll", [&](LPSTREAM stream, LONG size, BOOL runMode, REFIID id, LPVOID* picture) {
            ++decoded;
            return isRefused ? CTL_E_INVALIDPICTURE : decoder.Original(stream, size, runMode, id, picture);
        }};
    SUBCASE("one that can be decoded") {
        imgLogo.Picture(IDG_LOGO_192);
        imgLogo.Picture(IDG_LOGO_96);
        CHECK(decoded == 0);
        const COLORREF middle = Drawing(imgLogo).At(48, 48);
        CHECK(middle != GetSysColor(COLOR_3DFACE));
        CHECK_THROWS_AS(imgLogo.Picture(9999), AutomationError);
        CHECK(Drawing(imgLogo).At(48, 48) == middle);
    }
    SUBCASE("one that cannot") {
        isRefused = true;
        imgLogo.Picture(IDG_LOGO_96);
        for (int drawings = 0; drawings < 3; ++drawings)
            CHECK(Drawing(imgLogo).At(48, 48) == GetSysColor(COLOR_3DFACE));
    }
    CHECK(decoded == 1);
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
    const std::pair<int, int> rows[] = {{96, 1},  {119, 1}, {120, 2}, {150, 3},
                                        {192, 4}, {500, 4}, {72, 1},  {0, 1}};
    for (const auto& [place, resource] : rows) {
        CAPTURE(place);
        CHECK(ImageBox::ResourceFor(resources, place) == resource);
    }
}
