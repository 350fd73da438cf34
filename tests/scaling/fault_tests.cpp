// Whether a layout that somebody has spoilt is found to be so, control by control and in whatever font.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

#include "tests/scaling/captions.h"
#include "tests/scaling/faults.h"

namespace {

// In the coordinates of the parent.
RECT PlaceOf(HWND control) {
    RECT bounds = BoundsOf(control);
    MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&bounds), 2);
    return bounds;
}

void Put(HWND control, const RECT& place) {
    SetWindowPos(control, nullptr, place.left, place.top, std::max(0L, place.right - place.left),
                 std::max(0L, place.bottom - place.top), SWP_NOZORDER | SWP_NOACTIVATE);
}

// Of a control that is somewhere else meanwhile.
bool IsReportedAt(const RECT& place, const Surface& surface, HWND control, const char* fault) {
    const RECT before = PlaceOf(control);
    Put(control, place);
    const std::vector<std::string> faults = FaultsOf(surface, control);
    Put(control, before);
    return std::ranges::any_of(faults, [start = Describe(surface, control) + fault](const std::string& line) {
        return line.starts_with(start);
    });
}

// The text that has least space to spare.
const Caption& Tightest(const std::vector<Caption>& captions) {
    return *std::ranges::min_element(
        captions, {}, [](const Caption& caption) { return caption.space.cx - caption.needed.cx; });
}

}  // namespace

TEST_CASE("a text that lacks one pixel of width or height is reported as cut off") {
    int tooNarrow = 0;
    int tooLow = 0;
    ForEachSurface([&](const Surface& surface) {
        for (const HWND control : surface.controls) {
            const std::vector<Caption> captions = CaptionsOf("", control);
            const Role role = RoleOf(control);
            if (captions.empty()) continue;
            CAPTURE(Describe(surface, control));
            if (role == Role::ListView) {
                const int width = ListView_GetColumnWidth(control, 0);
                ListView_SetColumnWidth(control, 0, captions.front().needed.cx - 1);
                CHECK(IsReportedAt(PlaceOf(control), surface, control, kIsCutOff));
                ListView_SetColumnWidth(control, 0, width);
                continue;
            }
            const auto& [where, needed, space] = Tightest(captions);
            // A label with space for one more line breaks its text elsewhere first.
            if (role != Role::Text || space.cy - needed.cy < FontHeightOf(control)) {
                RECT place = PlaceOf(control);
                place.right -= space.cx - needed.cx;
                CHECK_FALSE(IsReportedAt(place, surface, control, kIsCutOff));
                --place.right;
                CHECK(IsReportedAt(place, surface, control, kIsCutOff));
                ++tooNarrow;
            }
            // The height of a combo box is that of its list.
            if (role != Role::Combo && role != Role::TextBox) {
                RECT place = PlaceOf(control);
                place.bottom -= space.cy - needed.cy + 1;
                CHECK(IsReportedAt(place, surface, control, kIsCutOff));
                ++tooLow;
            }
        }
    });
    CHECK(tooNarrow > 50);
    CHECK(tooLow > 50);
}

TEST_CASE("a control that covers the one before it, or leaves its page, is reported") {
    int count = 0;
    ForEachSurface([&](const Surface& surface) {
        HWND before = nullptr;
        for (const HWND control : surface.controls) {
            const Role role = RoleOf(control);
            if (role == Role::Tabs || role == Role::Frame || role == Role::Spin) continue;
            CAPTURE(Describe(surface, control));
            const RECT place = PlaceOf(control);
            RECT moved = place;
            if (before != nullptr) {
                const RECT own = BoundsOf(control);
                const RECT covered = BoundsOf(before);
                OffsetRect(&moved, covered.right - 1 - own.left, covered.bottom - 1 - own.top);
                CHECK(IsReportedAt(moved, surface, control, kCovers));
            }
            RECT page{};
            GetClientRect(GetParent(control), &page);
            moved = place;
            OffsetRect(&moved, page.right - 1 - place.left, -place.top);
            CHECK(IsReportedAt(moved, surface, control, kLeavesPage));
            before = control;
            ++count;
        }
    });
    CHECK(count > 60);
}
