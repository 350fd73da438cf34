// Whether a layout that somebody has spoilt is found to be so, control by control and in whatever font.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

#include "tests/scaling/captions.h"
#include "tests/scaling/faults.h"

namespace {

void Put(HWND control, const RECT& place) {
    SetWindowPos(control, nullptr, place.left, place.top, std::max(0L, place.right - place.left),
                 std::max(0L, place.bottom - place.top), SWP_NOZORDER | SWP_NOACTIVATE);
}

// Of a control whose edges are moved meanwhile, each by so many pixels to the right or down.
bool IsReported(const Surface& surface, HWND control, const char* fault, const RECT& moves) {
    RECT place = BoundsOf(control);
    MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    Put(control, {place.left + moves.left, place.top + moves.top, place.right + moves.right,
                  place.bottom + moves.bottom});
    const std::vector<std::string> faults = FaultsOf(surface, control);
    Put(control, place);
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

TEST_CASE("a text that lacks one pixel, and a control that covers another or leaves its page, are reported") {
    ForEachSurface([](const Surface& surface) {
        HWND before = nullptr;
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            const Role role = RoleOf(control);
            const auto isReported = [&](const char* fault, const RECT& moves) {
                return IsReported(surface, control, fault, moves);
            };
            const std::vector<Caption> captions = CaptionsOf(control);
            if (role == Role::ListView) {
                const int width = ListView_GetColumnWidth(control, 0);
                ListView_SetColumnWidth(control, 0, captions.front().needed.cx - 1);
                CHECK(isReported(kIsCutOff, {}));
                ListView_SetColumnWidth(control, 0, width);
            } else if (!captions.empty()) {
                const auto& [needed, space] = Tightest(captions);
                const LONG across = needed.cx - space.cx;
                const LONG down = needed.cy - space.cy;
                // A label with space for one more line breaks its text elsewhere first.
                if (role != Role::Text || -down < FontHeightOf(control)) {
                    CHECK_FALSE(isReported(kIsCutOff, {0, 0, across, 0}));
                    CHECK(isReported(kIsCutOff, {0, 0, across - 1, 0}));
                }
                // The height of a combo box is that of its list.
                if (role != Role::Combo && role != Role::TextBox)
                    CHECK(isReported(kIsCutOff, {0, 0, 0, down - 1}));
            }

            if (role == Role::Tabs || role == Role::Frame || role == Role::Spin) continue;
            const RECT bounds = BoundsOf(control);
            if (before != nullptr) {
                const LONG across = BoundsOf(before).right - 1 - bounds.left;
                const LONG down = BoundsOf(before).bottom - 1 - bounds.top;
                CHECK(isReported(kCovers, {across, down, across, down}));
            }
            const LONG across = ClientOf(GetParent(control)).right - 1 - bounds.left;
            CHECK(isReported(kLeavesPage, {across, 0, across, 0}));
            before = control;
        }
    });
}
