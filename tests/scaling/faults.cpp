#include "tests/scaling/faults.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>

#include "platform/text.h"
#include "tests/scaling/captions.h"

namespace {

bool Contains(const RECT& outer, const RECT& inner) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

bool Overlap(const RECT& first, const RECT& second) {
    RECT common;
    return IntersectRect(&common, &first, &second) != FALSE;
}

// A frame lies round other controls, but its caption does not lie on them.
bool FrameCovers(HWND frame, HWND control) {
    const RECT bounds = BoundsOf(frame);
    const RECT other = BoundsOf(control);
    RECT caption = bounds;
    caption.bottom = caption.top + CaptionsOf(frame).front().needed.cy;
    return Overlap(bounds, other) && (!Contains(bounds, other) || Overlap(caption, other));
}

// A spin control stands in the end of its text box.
bool IsSpinOf(HWND spin, HWND box) {
    return RoleOf(spin) == Role::Spin &&
           reinterpret_cast<HWND>(SendMessageW(spin, UDM_GETBUDDY, 0, 0)) == box;
}

bool Covers(HWND control, HWND other) {
    if (IsSpinOf(control, other) || IsSpinOf(other, control)) return false;
    const Role role = RoleOf(control);
    const Role otherRole = RoleOf(other);
    // The pages have an area of their own in the tab control.
    if ((role == Role::Tabs || otherRole == Role::Tabs) && GetParent(control) != GetParent(other))
        return false;
    if (role == Role::Frame && otherRole != Role::Frame) return FrameCovers(control, other);
    if (otherRole == Role::Frame && role != Role::Frame) return FrameCovers(other, control);
    return Overlap(BoundsOf(control), BoundsOf(other));
}

std::string Text(SIZE size) {
    return std::to_string(size.cx) + " x " + std::to_string(size.cy);
}

void AddCutOff(const std::string& where, const Caption& caption, std::vector<std::string>& faults) {
    if (caption.Fits()) return;
    faults.push_back(where + kIsCutOff + ": it takes " + Text(caption.needed) + " pixels and has " +
                     Text(caption.space));
}

bool LeavesPage(const Surface& surface, HWND control) {
    const HWND page = GetParent(control);
    if (!Contains(ClientOf(page), BoundsOf(control))) return true;
    return page != surface.window && !Contains(PageAreaOf(surface.controls.front()), BoundsOf(control));
}

}  // namespace

RECT ClientOf(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    MapWindowPoints(window, HWND_DESKTOP, reinterpret_cast<POINT*>(&client), 2);
    return client;
}

RECT PageAreaOf(HWND tabs) {
    RECT area = ClientOf(tabs);
    SendMessageW(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    return area;
}

std::vector<std::string> FaultsOf(const Surface& surface, HWND control) {
    std::vector<std::string> faults;
    const std::string where = Describe(surface, control);
    for (const Caption& caption : CaptionsOf(control))
        AddCutOff(where, caption, faults);
    if (LeavesPage(surface, control)) faults.push_back(where + kLeavesPage);
    for (const HWND other : surface.controls) {
        if (other == control) break;
        if (Covers(control, other)) faults.push_back(where + kCovers + Describe(surface, other));
    }
    return faults;
}

std::vector<std::string> FaultsOf(const Surface& surface) {
    std::vector<std::string> faults;
    AddCutOff(ToAnsi(surface.name) + ", title", TitleOf(surface), faults);
    for (const HWND control : surface.controls)
        std::ranges::move(FaultsOf(surface, control), std::back_inserter(faults));
    return faults;
}
