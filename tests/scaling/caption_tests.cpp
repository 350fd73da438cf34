// Whether what stands on the controls can be read whole, at the resolution that this process runs at.
#include <doctest.h>

#include <windows.h>

#include <cstdlib>

#include "app/resource.h"
#include "tests/accessibility/surfaces.h"
#include "tests/scaling/room.h"
#include "tests/support/shown_text.h"

namespace {

constexpr int kLonger = 40;  // per cent: what a translation may need

// The smallest desktop that the window fits on, in pixels of 96 dpi.
constexpr SIZE kDesktop{640, 480};

std::vector<Caption> AllCaptions() {
    std::vector<Caption> captions;
    ForEachSurface([&](const Surface& surface) {
        captions.push_back(TitleOf(Describe(surface, surface.controls.front()), surface.window));
        for (const HWND control : surface.controls) {
            for (const Caption& caption : CaptionsOf(Describe(surface, control), control))
                captions.push_back(caption);
        }
    });
    return captions;
}

}  // namespace

TEST_CASE("the resolution is the one that the caller has set") {
    const char* const expected = std::getenv("EXPECTED_DPI");
    if (expected != nullptr) CHECK(Dpi() == std::atoi(expected));
    CHECK(Dpi() >= 96);
}

TEST_CASE("every text fits its control") {
    const std::vector<Caption> captions = AllCaptions();
    CHECK(captions.size() > 9 + 6 * 3 + 40);
    for (const Caption& caption : captions) {
        CAPTURE(caption.where);
        CHECK(caption.needed.cx > 0);
        CHECK(caption.needed.cx <= caption.room.cx);
        CHECK(caption.needed.cy <= caption.room.cy);
    }
}

TEST_CASE("a text that is longer by two fifths would still fit") {
    for (const Caption& caption : AllCaptions()) {
        CAPTURE(caption.where);
        CHECK(caption.needed.cx + MulDiv(caption.text, kLonger, 100) <= caption.room.cx);
    }
}

TEST_CASE("the window and its dialogs fit a small desktop") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        const RECT bounds = BoundsOf(surface.window);
        CHECK(bounds.right - bounds.left <= Scaled(kDesktop.cx));
        CHECK(bounds.bottom - bounds.top <= Scaled(kDesktop.cy));
    });
}
