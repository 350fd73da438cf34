// Whether the window and its dialogs are laid out as they were designed, at the resolution that this process
// runs at: nothing is cut off, covered or off centre; and whether it is found when somebody has spoilt that.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "platform/text.h"
#include "tests/entry/window_inside.h"
#include "tests/scaling/faults.h"
#include "tests/support/control_font.h"
#include "tests/support/other_process.h"
#include "tests/support/test_folder.h"

namespace {

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
    const Control* const known = FindControl(controls.All(), GetDlgCtrlID(control));
    return known == nullptr ? L" without a name" : L' ' + std::wstring(known->Name());
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

// Whether the fault is found in a control whose edges are moved meanwhile, each by so many pixels to the
// right or down.
bool IsReported(const Surface& surface, HWND control, const char* fault, const RECT& moves) {
    RECT place = BoundsOf(control);
    MapWindowPoints(HWND_DESKTOP, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    const auto put = [&](const RECT& by) {
        const RECT now{place.left + by.left, place.top + by.top, place.right + by.right,
                       place.bottom + by.bottom};
        SetWindowPos(control, nullptr, now.left, now.top, std::max(0L, now.right - now.left),
                     std::max(0L, now.bottom - now.top), SWP_NOZORDER | SWP_NOACTIVATE);
    };
    put(moves);
    const std::string faults = FaultsOf(surface, control);
    put({});
    return faults.find(Describe(surface, control) + fault) != std::string::npos;
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
            // What the system has found, whatever was asked for.
            wchar_t found[LF_FACESIZE]{};
            InFontOf(control, [&](HDC dc) { return GetTextFaceW(dc, LF_FACESIZE, found); });
            CHECK(ToAnsi(found) == std::string(font));
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

TEST_CASE("every text fits its control, though longer by two fifths, and no control covers another") {
    ForEachSurface([](const Surface& surface) { CHECK(FaultsOf(surface) == ""); });
}

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
                const auto& [needed, space] = *std::ranges::max_element(
                    captions, {}, [](const Caption& caption) { return caption.needed.cx; });
                const LONG across = needed.cx - space.cx;
                const LONG down = needed.cy - space.cy;
                // A label of several lines breaks its text elsewhere first.
                if (role != Role::Text || space.cy < 2 * FontHeightOf(control)) {
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
