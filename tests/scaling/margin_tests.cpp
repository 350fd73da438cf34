// Whether what stands in the window and its dialogs keeps the same distance from opposite edges.
#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include "app/resource.h"
#include "tests/accessibility/surfaces.h"
#include "tests/scaling/faults.h"

namespace {

constexpr int kRounding = 1;  // of a place in dialog units, in pixels

// The smallest rectangle round the controls with this parent.
RECT BoundsOfControls(const Surface& surface, HWND parent) {
    RECT all{};
    for (const HWND control : surface.controls) {
        const RECT bounds = BoundsOf(control);
        if (GetParent(control) == parent) UnionRect(&all, &all, &bounds);
    }
    return all;
}

// The largest difference between opposite margins.
int Difference(const RECT& inner, const RECT& outer) {
    const LONG across = (inner.left - outer.left) - (outer.right - inner.right);
    const LONG down = (inner.top - outer.top) - (outer.bottom - inner.bottom);
    return std::max(std::abs(across), std::abs(down));
}

}  // namespace

TEST_CASE(
    "the controls keep as far from the left edge as from the right, and from the upper as from the lower") {
    int checked = 0;
    ForEachSurface([&](const Surface& surface) {
        CAPTURE(surface.name);
        CHECK(Difference(BoundsOfControls(surface, surface.window), ClientOf(surface.window)) <= kRounding);
        ++checked;
        const HWND tabs = GetDlgItem(surface.window, IDC_TAB);
        if (tabs == nullptr) return;
        const HWND page = GetParent(surface.controls.at(1));
        CHECK(Difference(BoundsOfControls(surface, page), PageAreaOf(tabs)) <= kRounding);
    });
    CHECK(checked == 6 + 3);
}
