// Whether the window and its dialogs are laid out as they were designed, at the resolution that this process
// runs at: nothing is cut off, covered or off centre.
#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "platform/text.h"
#include "tests/entry/window_inside.h"
#include "tests/scaling/captions.h"
#include "tests/scaling/faults.h"
#include "tests/support/other_process.h"
#include "tests/support/test_folder.h"

namespace {

constexpr int kLonger = 40;   // per cent: what a translation may need
constexpr int kRounding = 1;  // of a place in dialog units, in pixels

// Of the text that a user sees who has not asked for larger one, in pixels of 96 dpi.
constexpr int kTextHeight = 11;

// The smallest desktop that the window fits on, in pixels of 96 dpi and with text of that height.
constexpr SIZE kDesktop{640, 480};

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

// In dialog units, which follow the font: the same at every resolution and in every font.
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

// The name by which clients ask for the control; those of dialogs have none.
std::wstring ControlName(HWND control) {
    if (g_frmConfig == nullptr) return {};
    const ConfigControls controls;
    for (const Control* const each : controls.All()) {
        if (each->Id() == GetDlgCtrlID(control)) return L' ' + std::wstring(each->Name());
    }
    return L" without a name";
}

std::wstring TextsOf(HWND control) {
    const Role role = RoleOf(control);
    if (role != Role::ListView && role != Role::Combo) return CaptionOf(control);
    std::wstring texts;
    for (const std::wstring& text : role == Role::Combo ? ComboItems(control) : Headings(control))
        texts += texts.empty() ? text : L'|' + text;
    return texts;
}

std::string Utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(),
                                                         static_cast<int>(text.size()), bytes.data(),
                                                         static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

// A line for each control: what it is, its name, what it says, whether it starts disabled, and its place.
std::string Layout() {
    std::string text;
    ForEachSurface([&](const Surface& surface) {
        text += Utf8(surface.name) + " in \"" + Utf8(ShownText(surface.window)) + "\"\n";
        for (const HWND control : surface.controls) {
            const Role role = RoleOf(control);
            text += "    " + NameOf(role) + Utf8(ControlName(control));
            if (role != Role::Spin) text += " \"" + Utf8(TextsOf(control)) + "\": " + PlaceOf(control);
            text += IsWindowEnabled(control) ? "\n" : ", disabled\n";
        }
    });
    return text;
}

// The controls with this parent keep as far from each edge of an area as from the opposite one.
void CheckCentred(const Surface& surface, HWND parent, const RECT& area) {
    RECT all{};
    for (const HWND control : surface.controls) {
        const RECT bounds = BoundsOf(control);
        if (GetParent(control) == parent) UnionRect(&all, &all, &bounds);
    }
    CHECK(std::abs((all.left - area.left) - (area.right - all.right)) <= kRounding);
    CHECK(std::abs((all.top - area.top) - (area.bottom - all.bottom)) <= kRounding);
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
    ForEachSurface([&](const Surface& surface) {
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            // Windows gives spin controls no font: they have no text.
            if (RoleOf(control) == Role::Spin) continue;
            CHECK(ToAnsi(FontOf(control)) == std::string(font));
            CHECK(FontHeightOf(control) == Scaled(std::atoi(height)));
        }
    });
}

TEST_CASE("the controls and their places are those of the pictures") {
    const std::string layout = Layout();
    if (const char* const copy = std::getenv("LAYOUT_COPY"); copy != nullptr)
        std::ofstream(copy, std::ios::binary) << layout;
    CHECK(layout == BytesOf(DataFile(L"docs\\pictures\\layout.txt")));
}

TEST_CASE(
    "every text fits its control, also when it is longer by two fifths, and no control covers another") {
    ForEachSurface([](const Surface& surface) {
        CHECK(FaultsOf(surface) == kNoFaults);
        CHECK(TitleOf(surface, kLonger).Fits());
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            for (const Caption& caption : CaptionsOf(control, kLonger)) {
                CAPTURE(caption.space.cx);
                CHECK(caption.needed.cx > 0);
                CHECK(caption.Fits());
            }
        }
    });
}

TEST_CASE(
    "the window and its dialogs have a fixed size that fits a small desktop, and their controls keep as far "
    "from each edge as from the opposite one") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        CHECK((StyleOf(surface.window) & WS_THICKFRAME) == 0);
        const RECT bounds = BoundsOf(surface.window);
        const LONG text = FontHeightOf(surface.controls.back());
        CHECK(bounds.right - bounds.left <= MulDiv(kDesktop.cx, text, kTextHeight));
        CHECK(bounds.bottom - bounds.top <= MulDiv(kDesktop.cy, text, kTextHeight));

        CheckCentred(surface, surface.window, ClientOf(surface.window));
        const HWND tabs = GetDlgItem(surface.window, IDC_TAB);
        if (tabs != nullptr) CheckCentred(surface, GetParent(surface.controls.at(1)), PageAreaOf(tabs));
    });
}
