// Whether the window, its dialogs and all pictures follow a move to a monitor of another resolution, and come
// back as they were.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string_view>
#include <vector>

#include "app/resource.h"
#include "tests/entry/window_inside.h"
#include "tests/scaling/faults.h"
#include "tests/support/control_font.h"
#include "tests/support/import_fake.h"
#include "tests/support/other_process.h"

namespace {

// Windows' part in a move to a monitor of this resolution, which Wine leaves out: it asks for the size there,
// and then suggests bounds of that size. Returns the bounds that it suggests.
RECT MoveToMonitor(HWND window, int dpi) {
    constexpr POINT kPlace{40, 30};
    SIZE size{};
    SendMessageW(window, kGetDpiScaledSize, static_cast<WPARAM>(dpi), reinterpret_cast<LPARAM>(&size));
    const RECT suggested{kPlace.x, kPlace.y, kPlace.x + size.cx, kPlace.y + size.cy};
    SendMessageW(window, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(dpi, dpi)),
                 reinterpret_cast<LPARAM>(&suggested));
    return suggested;
}

// Up and down, by one step and by several.
constexpr int kMoves[] = {96, 120, 144, 192, 96, 192, 144, 120, 96};

constexpr int kTabPadding = 6;  // on each side, in pixels of 96 dpi

// The bounds of the window and its controls, on the screen, the end of the tabs and the widths of columns.
std::vector<LONG> PlacesOf(const Surface& surface) {
    std::vector<LONG> places;
    const auto add = [&](HWND window) {
        const RECT bounds = BoundsOf(window);
        places.insert(places.end(), {bounds.left, bounds.top, bounds.right, bounds.bottom});
    };
    add(surface.window);
    for (const HWND control : surface.controls) {
        add(control);
        if (RoleOf(control) == Role::Tabs) {
            RECT last{};
            TabCtrl_GetItemRect(control, TabCtrl_GetItemCount(control) - 1, &last);
            places.push_back(last.right);
        } else if (RoleOf(control) == Role::ListView) {
            for (int column = 0; column < Header_GetItemCount(ListView_GetHeader(control)); ++column)
                places.push_back(ListView_GetColumnWidth(control, column));
        }
    }
    return places;
}

// A font's height is a whole number of pixels.
bool IsScaled(LONG height, LONG before, int dpi) {
    return std::abs(height - MulDiv(before, dpi, Dpi())) <= 1;
}

constexpr int kSmallIcon = 16;       // in pixels of 96 dpi, as all sizes here
constexpr SIZE kRowPicture{22, 16};  // a small icon and the air beside it

void CheckSize(HICON icon, int pixels) {
    ICONINFO info{};
    BITMAP bitmap{};
    REQUIRE(GetIconInfo(icon, &info));
    GetObjectW(info.hbmColor, sizeof(bitmap), &bitmap);
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    CHECK(bitmap.bmWidth == pixels);
    CHECK(bitmap.bmHeight == pixels);
}

struct Pictures : InsideWithoutEngine {
    Pictures() { Instance(FormHide); }

    // Those of the window, when it lies on a monitor of this resolution.
    void CheckWindow(int dpi) const {
        for (const auto& [kind, size] : {std::pair{ICON_SMALL, kSmallIcon}, {ICON_BIG, 2 * kSmallIcon}}) {
            const LRESULT icon = SendMessageW(Window(), WM_GETICON, static_cast<WPARAM>(kind), 0);
            CheckSize(reinterpret_cast<HICON>(icon), MulDiv(size, dpi, kDefaultDpi));
        }
        for (const int list : {IDC_LVWBANNERS, IDC_LVWSEARCHURLS}) {
            const HIMAGELIST images = ListView_GetImageList(ControlOf(list), LVSIL_SMALL);
            int width = 0;
            int height = 0;
            REQUIRE(ImageList_GetIconSize(images, &width, &height));
            CHECK(ImageList_GetImageCount(images) == 2);
            CHECK(width == MulDiv(kRowPicture.cx, dpi, kDefaultDpi));
            CHECK(height == MulDiv(kRowPicture.cy, dpi, kDefaultDpi));
        }
        // The largest logo that its place has space for, and not smaller than the resolution asks for.
        const std::map<int, INT_PTR> logos{
            {96, IDG_LOGO_96}, {120, IDG_LOGO_120}, {144, IDG_LOGO_144}, {192, IDG_LOGO_192}};
        RECT box{};
        GetClientRect(ControlOf(IDC_IMGLOGO), &box);
        const auto& [pixels, logo] = *std::prev(logos.upper_bound(std::min(box.right, box.bottom)));
        CHECK(pixels >= dpi);
        CHECK(lastLogo == logo);
    }

    // The one at rest and the three frames, when the taskbar lies on a monitor of this resolution.
    static void CheckTray(int dpi) {
        std::vector<ComPtr<IDispatch>> pictures(4);
        REQUIRE(g_frmConfig->get_picShellIcon(&pictures[0]) == S_OK);
        for (short frame = 0; frame < 3; ++frame)
            REQUIRE(g_frmConfig->get_picTray(frame, &pictures[static_cast<size_t>(frame) + 1]) == S_OK);
        for (const ComPtr<IDispatch>& picture : pictures)
            CheckSize(IconOf(picture.Get()), MulDiv(kSmallIcon, dpi, kDefaultDpi));
    }

    INT_PTR lastLogo = 0;
    const ImportFake<"FindResourceW", decltype(&FindResourceW)> find{
        "kernel32.dll", [this](HMODULE module, LPCWSTR name, LPCWSTR type) {
            if (type == RT_RCDATA) lastLogo = reinterpret_cast<INT_PTR>(name);
            return find.Original(module, name, type);
        }};
};

int taskbarDpi = 0;

UINT WINAPI DpiForWindow(HWND) {
    return static_cast<UINT>(taskbarDpi);
}

}  // namespace

TEST_CASE(
    "window, fonts, places and columns follow each move between monitors, nothing is cut off, and a "
    "resolution looks as it did the first time") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        const HWND tabs = GetDlgItem(surface.window, IDC_TAB);
        const std::vector<LONG> start = PlacesOf(surface);
        const LONG width = start[2] - start[0];
        std::map<HWND, LONG> heights;
        for (const HWND control : surface.controls)
            heights[control] = FontHeightOf(control);
        std::map<int, std::vector<LONG>> first;
        for (const int dpi : kMoves) {
            CAPTURE(dpi);
            const RECT suggested = MoveToMonitor(surface.window, dpi);
            const RECT bounds = BoundsOf(surface.window);
            CHECK(EqualRect(&bounds, &suggested));
            // Letters are a whole number of pixels wide, so that a window is not exactly in proportion.
            CHECK(std::abs(bounds.right - bounds.left - MulDiv(width, dpi, Dpi())) < width / 4);
            CHECK((bounds.right - bounds.left > width) == (dpi > Dpi()));
            for (const HWND control : surface.controls) {
                CAPTURE(Describe(surface, control));
                if (RoleOf(control) != Role::Spin)
                    CHECK(IsScaled(FontHeightOf(control), heights[control], dpi));
            }
            if (tabs != nullptr) {
                // Short texts have more space than they need, since tabs have a least width.
                constexpr int kSettings = 0;
                RECT tab{};
                TabCtrl_GetItemRect(tabs, kSettings, &tab);
                CHECK(tab.right - tab.left - SizeOfText(tabs, TabText(tabs, kSettings)).cx >=
                      2 * MulDiv(kTabPadding, dpi, kDefaultDpi));
            }
            // The frame of the window stays as it is at this process's resolution: Wine does not scale it.
            if (dpi >= Dpi()) CHECK(FaultsOf(surface) == "");
            const std::vector<LONG> places = PlacesOf(surface);
            CHECK(first.try_emplace(dpi, places).first->second == places);
        }
        MoveToMonitor(surface.window, Dpi());
        SetWindowPos(surface.window, nullptr, start[0], start[1], 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        CHECK(PlacesOf(surface) == start);
    });
}

TEST_CASE("a window grows at once when the user asks for larger text, and shrinks again") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof(metrics);
        REQUIRE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0));
        NONCLIENTMETRICSW larger = metrics;
        larger.lfMessageFont.lfHeight = metrics.lfMessageFont.lfHeight * 3 / 2;
        const std::vector<LONG> start = PlacesOf(surface);

        REQUIRE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(larger), &larger, 0));
        SendMessageW(surface.window, WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
        CHECK(PlacesOf(surface)[2] > start[2]);
        CHECK(IsScaled(FontHeightOf(surface.controls.front()), -larger.lfMessageFont.lfHeight, Dpi()));
        CHECK(FaultsOf(surface) == "");

        SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
        SendMessageW(surface.window, WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
        CHECK(PlacesOf(surface) == start);
    });
}

TEST_CASE_FIXTURE(Pictures, "icons and logo have the size for their monitor, and follow a move to another") {
    CheckWindow(Dpi());
    for (const int dpi : {120, 192, 144, 96, 192, 96}) {
        CAPTURE(dpi);
        MoveToMonitor(Window(), dpi);
        CheckWindow(dpi);
    }
}

TEST_CASE_FIXTURE(Pictures,
                  "the tray's pictures have the size for the taskbar, and follow it to another monitor") {
    CheckTray(Dpi());
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [&](HMODULE library, LPCSTR name) {
            return std::string_view(name) == "GetDpiForWindow"
                       ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&DpiForWindow))
                       : functions.Original(library, name);
        }};
    for (const int dpi : {144, 96, 192}) {
        CAPTURE(dpi);
        taskbarDpi = dpi;
        SendMessageW(Window(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
        CheckTray(dpi);
    }
}
