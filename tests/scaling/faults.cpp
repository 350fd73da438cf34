#include "tests/scaling/faults.h"

#include <commctrl.h>

#include <algorithm>

#include "platform/text.h"
#include "tests/support/control_font.h"
#include "tests/support/other_process.h"

namespace {

constexpr size_t kLonger = 40;     // per cent
constexpr int kButtonMargin = 5;   // on each side, border and focus rectangle
constexpr int kGlyphGap = 4;       // between a check box and its text
constexpr int kFrameMargin = 8;    // before and behind the text in the upper edge of a frame
constexpr int kHeadingMargin = 6;  // on each side
constexpr int kTextBoxMargin = 3;  // on each side
constexpr int kListRowMargin = 4;
constexpr int kTabStripMargin = 2;  // before and behind all tabs; the chosen one reaches into it

// Made of its own words. It ends as the text does: a space at the end may hang over.
std::wstring Lengthened(const std::wstring& text) {
    const size_t added = text.size() * kLonger / 100;
    return added == 0 ? text : text.substr(0, added - 1) + L' ' + text;
}

SIZE ClientSize(HWND control) {
    RECT client{};
    GetClientRect(control, &client);
    return {client.right, client.bottom};
}

// format: DT_NOPREFIX, or 0 where the character after a "&" is drawn as the access key.
Caption OneLine(HWND control, const std::wstring& text, SIZE round, UINT format = DT_NOPREFIX) {
    const SIZE size = SizeOfText(control, text, DT_SINGLELINE | format);
    return {{size.cx + round.cx, size.cy + round.cy}, ClientSize(control)};
}

std::vector<Caption> ItemsOf(HWND combo) {
    std::vector<Caption> captions;
    const SIZE round{2 * Scaled(kTextBoxMargin) + GetSystemMetrics(SM_CXVSCROLL),
                     2 * GetSystemMetrics(SM_CYEDGE)};
    for (const std::wstring& item : ComboItems(combo))
        captions.push_back(OneLine(combo, Lengthened(item), round));
    return captions;
}

std::vector<Caption> HeadingsOf(HWND list) {
    std::vector<Caption> captions;
    for (const std::wstring& heading : Headings(list)) {
        Caption caption =
            OneLine(ListView_GetHeader(list), Lengthened(heading), {2 * Scaled(kHeadingMargin), 0});
        caption.space.cx = ListView_GetColumnWidth(list, static_cast<int>(captions.size()));
        captions.push_back(caption);
    }
    return captions;
}

// The row of tabs is as wide as its texts and a fixed amount for each tab. Where that is too much it
// scrolls, and a tab out of sight has an empty rectangle and no space at all.
Caption TabsOf(HWND tabs) {
    Caption caption{{2 * kTabStripMargin, 0}, ClientSize(tabs)};
    for (int tab = 0; tab < TabCtrl_GetItemCount(tabs); ++tab) {
        RECT item{};
        TabCtrl_GetItemRect(tabs, tab, &item);
        if (IsRectEmpty(&item)) item.right = caption.space.cx + 1;
        const std::wstring text = TabText(tabs, tab);
        caption.needed.cx +=
            item.right - item.left + SizeOfText(tabs, Lengthened(text)).cx - SizeOfText(tabs, text).cx;
        caption.needed.cy = std::max(caption.needed.cy, item.bottom);
    }
    return caption;
}

// Space for what is in it, or for the longest number that makes sense.
Caption TextBoxOf(HWND box) {
    RECT space{};
    SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&space));
    const std::wstring text = ShownText(box);
    const HWND next = GetWindow(box, GW_HWNDNEXT);
    const bool hasSpin = next != nullptr && RoleOf(next) == Role::Spin;
    Caption caption = OneLine(box, text.empty() ? L"1024" : text, {hasSpin ? ClientSize(next).cx : 0, 0});
    caption.space = {space.right - space.left, space.bottom - space.top};
    return caption;
}

bool Contains(const RECT& outer, const RECT& inner) {
    RECT all;
    UnionRect(&all, &outer, &inner);
    return EqualRect(&all, &outer) != FALSE;
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

bool LeavesPage(const Surface& surface, HWND control) {
    const HWND page = GetParent(control);
    if (!Contains(ClientOf(page), BoundsOf(control))) return true;
    return page != surface.window && !Contains(PageAreaOf(surface.controls.front()), BoundsOf(control));
}

std::string Text(SIZE size) {
    return std::to_string(size.cx) + " x " + std::to_string(size.cy);
}

}  // namespace

std::vector<Caption> CaptionsOf(HWND control) {
    const std::wstring text = Lengthened(CaptionOf(control));
    switch (RoleOf(control)) {
        case Role::Text: {
            const SIZE space = ClientSize(control);
            return {{SizeOfText(control, text, DT_WORDBREAK, space.cx), space}};
        }
        case Role::Link:
            return {OneLine(control, text, {})};
        case Role::Button:
            return {OneLine(control, text, {2 * Scaled(kButtonMargin), 2 * GetSystemMetrics(SM_CYEDGE)}, 0)};
        case Role::CheckBox:
        case Role::OptionButton:
            return {OneLine(control, text, {GetSystemMetrics(SM_CXMENUCHECK) + Scaled(kGlyphGap), 0}, 0)};
        case Role::Frame:
            return {OneLine(control, text, {2 * Scaled(kFrameMargin), 0}, 0)};
        case Role::Combo:
            return ItemsOf(control);
        case Role::ListView:
            return HeadingsOf(control);
        case Role::ListBox:
            return {OneLine(control, L"www.example.com", {2 * Scaled(kListRowMargin), 0})};
        case Role::Tabs:
            return {TabsOf(control)};
        case Role::TextBox:
            return {TextBoxOf(control)};
        case Role::Picture:
        case Role::Spin:
            break;
    }
    return {};
}

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

std::string FaultsOf(const Surface& surface, HWND control) {
    std::string faults;
    const auto report = [&](const std::string& fault) {
        faults += Describe(surface, control) + fault + '\n';
    };
    for (const auto& [needed, space] : CaptionsOf(control)) {
        if (needed.cx > space.cx || needed.cy > space.cy)
            report(kIsCutOff + (": it takes " + Text(needed)) + " pixels and has " + Text(space));
    }
    if (LeavesPage(surface, control)) report(kLeavesPage);
    for (const HWND other : surface.controls) {
        if (other == control) break;
        if (Covers(control, other)) report(kCovers + Describe(surface, other));
    }
    return faults;
}

std::string FaultsOf(const Surface& surface) {
    std::string faults;
    for (const HWND control : surface.controls)
        faults += FaultsOf(surface, control);
    return faults;
}
