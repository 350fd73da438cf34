// The About page: the link, the logo and the opening of an address.
#include <windows.h>
#include <olectl.h>
#include <shellapi.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/resource.h"
#include "platform/automation_error.h"
#include "tests/support/import_fake.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// A window whose link shows its address. The shell has no program for any.
struct AboutPageFixture : SettingsWindow {
    AboutPageFixture() { AboutControls::SetUp(); }

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

constexpr COLORREF kNothing = RGB(1, 254, 3);

constexpr COLORREF kParents = RGB(10, 20, 30);

// Stands before the window of a page whose background is another than the system's.
LRESULT CALLBACK GiveBackground(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                DWORD_PTR brush) {
    if (message == WM_CTLCOLORSTATIC) return static_cast<LRESULT>(brush);
    return DefSubclassProc(hwnd, message, wParam, lParam);
}

// The pixels of a control of this size, row by row, each kNothing where it draws nothing.
std::vector<COLORREF> Drawn(const Control& control, int width, int height) {
    SetWindowPos(control.Hwnd(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    ReleaseDC(nullptr, screen);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    std::vector<COLORREF> pixels;
    for (int i = 0; i < width * height; ++i)
        SetPixel(dc, i % width, i / width, kNothing);
    SendMessageW(control.Hwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
    for (int i = 0; i < width * height; ++i)
        pixels.push_back(GetPixel(dc, i % width, i / width));
    SelectObject(dc, before);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return pixels;
}

}  // namespace

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link and the logo open the link's caption as it stands, so that changing it changes "
                  "the target; the result does not matter") {
    const std::wstring other = L"http://other.example/\u00e4?a b";
    Press(lblNavSite);
    lblNavSite.Caption(other);
    Press(imgLogo);
    CHECK(opened == std::vector<std::string>{"http://www.calvane.example", ToAnsi(other)});
    CHECK_FALSE(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the link is pressed by Enter and by Space as they go down, once, be they held or not") {
    ShowWindow(window.Hwnd(), SW_SHOW);
    const HWND link = lblNavSite.Hwnd();
    lblNavSite.SetFocus();
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
        CAPTURE(key);
        opened.clear();
        const auto play = [&](UINT what, LPARAM flags) {
            PostMessageW(link, what, key, flags);
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                if (IsDialogMessageW(window.Hwnd(), &message)) continue;
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        };
        play(WM_KEYDOWN, 1);
        CHECK(opened.size() == 1);
        play(WM_KEYDOWN, (static_cast<LPARAM>(KF_REPEAT) << 16) | 1);
        play(WM_KEYUP, static_cast<LPARAM>(0xC0000001));
        CHECK(opened.size() == 1);
    }
}

TEST_CASE_FIXTURE(AboutPageFixture, "the pointer over the logo is a hand") {
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    CHECK(SendMessageW(imgLogo.Hwnd(), WM_SETCURSOR, reinterpret_cast<WPARAM>(imgLogo.Hwnd()),
                       MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)) == TRUE);
    CHECK(GetCursor() == LoadCursorW(nullptr, IDC_HAND));
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

TEST_CASE_FIXTURE(
    AboutPageFixture,
    "the logo is the one that fits its place, decoded when it is first drawn, and drawn in its own pixels "
    "over the parent's background, which is all that is drawn of none and of one that cannot be decoded; one "
    "that is not there is an error and leaves the one before it") {
    int decoded = 0;
    bool isRefused = false;
    const ImportFake<"OleLoadPicture", decltype(&OleLoadPicture)> decoder{
        "oleaut32.dll", [&](LPSTREAM stream, LONG size, BOOL runMode, REFIID id, LPVOID* picture) {
            ++decoded;
            return isRefused ? CTL_E_INVALIDPICTURE : decoder.Original(stream, size, runMode, id, picture);
        }};
    const COLORREF background = GetSysColor(COLOR_3DFACE);
    const std::vector<COLORREF> empty(96 * 96, background);
    CHECK(Drawn(imgLogo, 96, 96) == empty);
    imgLogo.Picture(IDG_LOGO_192);
    imgLogo.Picture(IDG_LOGO_96);
    CHECK(decoded == 0);
    const std::vector<COLORREF> exact = Drawn(imgLogo, 96, 96);
    CHECK(std::count(exact.begin(), exact.end(), background) < 96 * 96 - 1000);
    CHECK(std::count(exact.begin(), exact.end(), kNothing) == 0);
    CHECK(exact[0] == background);  // a transparent corner
    CHECK_THROWS_AS(imgLogo.Picture(9999), AutomationError);
    CHECK(Drawn(imgLogo, 96, 96) == exact);
    CHECK(decoded == 1);

    imgLogo.Picture({{96, IDG_LOGO_96}, {192, IDG_LOGO_192}});
    const std::vector<COLORREF> roomy = Drawn(imgLogo, 104, 100);
    for (int y = 0; y < 96; ++y)
        CHECK(std::equal(exact.begin() + y * 96, exact.begin() + (y + 1) * 96,
                         roomy.begin() + (y + 2) * 104 + 4));

    isRefused = true;
    imgLogo.Picture(IDG_LOGO_96);
    for (int drawings = 0; drawings < 3; ++drawings)
        CHECK(Drawn(imgLogo, 96, 96) == empty);
    CHECK(decoded == 3);
}

TEST_CASE_FIXTURE(AboutPageFixture,
                  "the logo lies on the background that its parent gives it, and is drawn before its "
                  "painting ends") {
    const HBRUSH brush = CreateSolidBrush(kParents);
    SetWindowSubclass(window.Hwnd(), GiveBackground, 1, reinterpret_cast<DWORD_PTR>(brush));
    CHECK(Drawn(imgLogo, 96, 96)[0] == kParents);
    COLORREF painted = kNothing;
    const ImportFake<"EndPaint", decltype(&EndPaint)> end{"user32.dll",
                                                          [&](HWND hwnd, const PAINTSTRUCT* paint) {
                                                              if (hwnd == imgLogo.Hwnd())
                                                                  painted = GetPixel(paint->hdc, 1, 1);
                                                              return end.Original(hwnd, paint);
                                                          }};
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetWindowPos(imgLogo.Hwnd(), HWND_TOP, 0, 0, 96, 96, 0);
    UpdateWindow(imgLogo.Hwnd());
    CHECK(painted == kParents);
    RemoveWindowSubclass(window.Hwnd(), GiveBackground, 1);
    DeleteObject(brush);
}

TEST_CASE("the largest picture is taken that fits its box, else the smallest; its place in the box") {
    const std::tuple<std::string, SIZE, SIZE, RECT> rows[] = {
        {"as large as it", {96, 96}, {96, 96}, {0, 0, 96, 96}},
        {"nearly", {96, 96}, {104, 100}, {4, 2, 100, 98}},
        {"nearly, in one direction", {10, 100}, {20, 101}, {5, 0, 15, 100}},
        {"not quite a quarter larger", {96, 96}, {119, 119}, {11, 11, 107, 107}},
        {"a quarter larger", {96, 96}, {120, 120}, {0, 0, 120, 120}},
        {"too small", {96, 96}, {95, 95}, {0, 0, 95, 95}},
        {"of other proportions", {96, 48}, {200, 200}, {0, 50, 200, 150}},
        {"of others", {48, 96}, {200, 200}, {50, 0, 150, 200}},
        {"too small for a line", {1000, 1}, {10, 10}, {0, 4, 10, 5}},
        {"no picture", {0, 0}, {10, 10}, {0, 0, 0, 0}},
        {"no place", {10, 10}, {0, 10}, {0, 0, 0, 0}},
    };
    for (const auto& [what, picture, box, bounds] : rows) {
        CAPTURE(what);
        const RECT found = PictureBounds(picture, box);
        CHECK(EqualRect(&found, &bounds) != 0);
    }
    const std::initializer_list<ImageBox::Resource> resources = {{144, 3}, {96, 1}, {192, 4}, {120, 2}};
    for (const auto& [place, resource] : {std::pair(96, 1), {119, 1}, {120, 2}, {500, 4}, {72, 1}, {0, 1}}) {
        CAPTURE(place);
        CHECK(ImageBox::ResourceFor(resources, place) == resource);
    }
}
