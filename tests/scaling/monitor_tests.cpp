// Whether the window and its dialogs follow a move to a monitor of another resolution, and come back as they
// were.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <cstdlib>
#include <map>
#include <vector>

#include "app/resource.h"
#include "tests/scaling/captions.h"
#include "tests/scaling/faults.h"
#include "tests/scaling/monitor.h"
#include "tests/support/other_process.h"

namespace {

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
            if (dpi >= Dpi()) CHECK(TextOf(FaultsOf(surface)) == "");
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
        CHECK(TextOf(FaultsOf(surface)) == "");

        SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
        SendMessageW(surface.window, WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
        CHECK(PlacesOf(surface) == start);
    });
}
