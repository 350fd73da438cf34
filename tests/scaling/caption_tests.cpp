// Whether what stands on the controls can be read whole, at the resolution that this process runs at.
#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include "platform/text.h"
#include "tests/accessibility/surfaces.h"
#include "tests/scaling/faults.h"
#include "tests/scaling/captions.h"

namespace {

constexpr int kLonger = 40;  // per cent: what a translation may need

// Of the text that a user sees who has not asked for larger one, in pixels of 96 dpi.
constexpr int kTextHeight = 11;

// The smallest desktop that the window fits on, in pixels of 96 dpi and with text of that height.
constexpr SIZE kDesktop{640, 480};

// Visits every control that is shown, and says how many there were.
int ForEachControl(const std::function<void(const std::string& where, HWND control)>& visit) {
    int count = 0;
    ForEachSurface([&](const Surface& surface) {
        for (const HWND control : surface.controls) {
            visit(Describe(surface, control), control);
            ++count;
        }
    });
    return count;
}

}  // namespace

TEST_CASE("the resolution, the font and the size of the text are those that the caller has set") {
    const char* const dpi = std::getenv("EXPECTED_DPI");
    if (dpi != nullptr) CHECK(Dpi() == std::atoi(dpi));
    CHECK(Dpi() >= 96);
    const char* const font = std::getenv("EXPECTED_FONT");
    if (font == nullptr) return;
    const char* const height = std::getenv("EXPECTED_HEIGHT");
    REQUIRE(height != nullptr);
    ForEachControl([&](const std::string& where, HWND control) {
        CAPTURE(where);
        // Windows gives spin controls no font: they have no text.
        if (RoleOf(control) == Role::Spin) return;
        CHECK(ToAnsi(FontOf(control)) == std::string(font));
        CHECK(FontHeightOf(control) == Scaled(std::atoi(height)));
    });
}

TEST_CASE("every text fits its control, and no control covers another or leaves its page") {
    int texts = 0;
    ForEachSurface([&](const Surface& surface) {
        CHECK(TextOf(FaultsOf(surface)) == "");
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            const std::vector<Caption> captions = CaptionsOf("", control);
            CHECK(
                std::ranges::all_of(captions, [](const Caption& caption) { return caption.needed.cx > 0; }));
            texts += static_cast<int>(captions.size());
        }
    });
    CHECK(texts > 6 * 3 + 40);
}

TEST_CASE("a text that is longer by two fifths would still fit") {
    ForEachSurface([](const Surface& surface) {
        const Caption title = TitleOf(Describe(surface, surface.window), surface.window, kLonger);
        CHECK(title.needed.cx <= title.space.cx);
    });
    ForEachControl([](const std::string& where, HWND control) {
        for (const Caption& caption : CaptionsOf(where, control, kLonger)) {
            CAPTURE(caption.where);
            CAPTURE(caption.space.cx);
            CHECK(caption.needed.cx <= caption.space.cx);
            CHECK(caption.needed.cy <= caption.space.cy);
        }
    });
}

TEST_CASE("the window and its dialogs fit a small desktop") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        const RECT bounds = BoundsOf(surface.window);
        const LONG text = FontHeightOf(surface.controls.back());
        CHECK(bounds.right - bounds.left <= MulDiv(kDesktop.cx, text, kTextHeight));
        CHECK(bounds.bottom - bounds.top <= MulDiv(kDesktop.cy, text, kTextHeight));
    });
}
