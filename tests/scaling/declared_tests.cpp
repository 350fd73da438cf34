// Whether the window is laid out as in the pictures of the documents. In dialog units, which follow the font,
// it is the same at every resolution and in every font.
#include <doctest.h>

#include <windows.h>

#include <cstdlib>
#include <fstream>

#include "tests/accessibility/surfaces.h"
#include "tests/scaling/captions.h"
#include "tests/support/test_folder.h"
#include "tests/support/other_process.h"

namespace {

// A spin control takes part of its text box, as much as the system's scroll bars need: the two count as one.
// It covers the edge of the box, so that together they are narrower by that than the box was.
RECT WithSpin(HWND control) {
    RECT bounds = BoundsOf(control);
    const HWND next = GetWindow(control, GW_HWNDNEXT);
    if (next == nullptr || RoleOf(control) != Role::TextBox || RoleOf(next) != Role::Spin) return bounds;
    const RECT spin = BoundsOf(next);
    const LONG covered = bounds.right - spin.left;
    UnionRect(&bounds, &bounds, &spin);
    bounds.right += covered;
    return bounds;
}

// Four dialog units across and eight down, in pixels of the font that the controls of a page have.
SIZE UnitsOf(HWND page) {
    const SIZE letters =
        SizeOfText(GetTopWindow(page), L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    return {(letters.cx / 26 + 1) / 2, letters.cy};
}

std::string PlaceOf(HWND control) {
    const HWND page = GetParent(control);
    const SIZE units = UnitsOf(page);
    RECT bounds = WithSpin(control);
    MapWindowPoints(HWND_DESKTOP, page, reinterpret_cast<POINT*>(&bounds), 2);
    const auto across = [&](LONG pixels) { return std::to_string(MulDiv(pixels, 4, units.cx)); };
    const auto down = [&](LONG pixels) { return std::to_string(MulDiv(pixels, 8, units.cy)); };
    std::string place =
        across(bounds.left) + ", " + down(bounds.top) + ", " + across(bounds.right - bounds.left);
    // A combo box is as high as a line of its font and the border of the system.
    if (RoleOf(control) != Role::Combo) place += ", " + down(bounds.bottom - bounds.top);
    return place;
}

std::string Utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(),
                                                         static_cast<int>(text.size()), bytes.data(),
                                                         static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

std::string Layout() {
    std::string text;
    ForEachSurface([&](const Surface& surface) {
        text += Utf8(surface.name) + '\n';
        for (const HWND control : surface.controls) {
            if (RoleOf(control) == Role::Spin) continue;
            text += "    " + Utf8(ClassOf(control) + L" \"" + CaptionOf(control)) +
                    "\": " + PlaceOf(control) + '\n';
        }
    });
    return text;
}

}  // namespace

TEST_CASE("the controls and their places are those of the pictures") {
    const std::string layout = Layout();
    if (const char* const copy = std::getenv("LAYOUT_COPY"); copy != nullptr)
        std::ofstream(copy, std::ios::binary) << layout;
    CHECK(layout == BytesOf(DataFile(L"docs\\pictures\\layout.txt")));
}
