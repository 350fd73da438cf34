// Whether a layout that somebody has spoilt is found to be so, control by control and in whatever font.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

#include "tests/scaling/faults.h"
#include "tests/scaling/captions.h"
#include "tests/support/other_process.h"

namespace {

bool IsReported(const Surface& surface, HWND control, const char* fault) {
    const std::vector<std::string> faults = FaultsOf(surface, control);
    return std::ranges::any_of(faults, [start = Describe(surface, control) + fault](const std::string& line) {
        return line.starts_with(start);
    });
}

// In the coordinates of the parent; the control goes back there in the end.
class Place {
public:
    explicit Place(HWND control) : m_control(control), m_bounds(BoundsOf(control)) {
        MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&m_bounds), 2);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() { Set(m_bounds.left, m_bounds.top, Width(), Height()); }

    void Shrink(LONG width, LONG height) const {
        Set(m_bounds.left, m_bounds.top, std::max(0L, Width() - width), std::max(0L, Height() - height));
    }
    void Move(LONG left, LONG top) const { Set(left, top, Width(), Height()); }

private:
    LONG Width() const noexcept { return m_bounds.right - m_bounds.left; }
    LONG Height() const noexcept { return m_bounds.bottom - m_bounds.top; }
    void Set(LONG left, LONG top, LONG width, LONG height) const {
        SetWindowPos(m_control, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
    }

    HWND m_control;
    RECT m_bounds;
};

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
            if (captions.empty()) continue;
            CAPTURE(Describe(surface, control));
            const Caption caption = Tightest(captions);
            const LONG spareWidth = caption.space.cx - caption.needed.cx;
            const LONG spareHeight = caption.space.cy - caption.needed.cy;
            const Role role = RoleOf(control);
            if (ClassOf(control) == WC_LISTVIEWW) {
                const int width = ListView_GetColumnWidth(control, 0);
                ListView_SetColumnWidth(control, 0, CaptionsOf("", control).front().needed.cx - 1);
                CHECK(IsReported(surface, control, kIsCutOff));
                ListView_SetColumnWidth(control, 0, width);
                ++tooNarrow;
                continue;
            }
            const Place place(control);
            // A label with space for one more line breaks its text elsewhere first.
            if (role != Role::Text || spareHeight < FontHeightOf(control)) {
                place.Shrink(spareWidth, 0);
                CHECK_FALSE(IsReported(surface, control, kIsCutOff));
                place.Shrink(spareWidth + 1, 0);
                CHECK(IsReported(surface, control, kIsCutOff));
                ++tooNarrow;
            }
            // The height of a combo box is that of its list.
            if (role != Role::Combo && role != Role::TextBox) {
                place.Shrink(0, spareHeight + 1);
                CHECK(IsReported(surface, control, kIsCutOff));
                ++tooLow;
            }
        }
    });
    CHECK(tooNarrow > 50);
    CHECK(tooLow > 50);
}

TEST_CASE("a control that covers the one before it, or leaves its page, is reported") {
    int moved = 0;
    ForEachSurface([&](const Surface& surface) {
        CAPTURE(surface.name);
        HWND before = nullptr;
        for (const HWND control : surface.controls) {
            const Role role = RoleOf(control);
            if (role == Role::Tabs || role == Role::Frame || role == Role::Spin) continue;
            CAPTURE(Describe(surface, control));
            const Place place(control);
            if (before != nullptr) {
                RECT target = BoundsOf(before);
                MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&target), 2);
                place.Move(target.right - 1, target.bottom - 1);
                CHECK(IsReported(surface, control, kCovers));
            }
            RECT page{};
            GetClientRect(GetParent(control), &page);
            place.Move(page.right - 1, 0);
            CHECK(IsReported(surface, control, kLeavesPage));
            before = control;
            ++moved;
        }
    });
    CHECK(moved > 60);
}
