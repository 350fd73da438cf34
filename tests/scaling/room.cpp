#include "tests/scaling/room.h"

#include <commctrl.h>

#include <algorithm>

#include "tests/accessibility/surfaces.h"
#include "tests/window/other_process.h"

namespace {

constexpr int kButtonMargin = 5;   // on each side, border and focus rectangle
constexpr int kGlyphGap = 4;       // between a check box and its text
constexpr int kFrameMargin = 8;    // before and behind the text in the upper edge of a frame
constexpr int kHeadingMargin = 6;  // on each side
constexpr int kTextBoxMargin = 3;  // on each side
constexpr int kListRowMargin = 4;

SIZE TextSize(HWND control, const std::wstring& text) {
    const HDC dc = GetDC(control);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ before = SelectObject(dc, font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    RECT bounds{};
    DrawTextW(dc, text.c_str(), -1, &bounds, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(dc, before);
    ReleaseDC(control, dc);
    return {bounds.right, bounds.bottom};
}

SIZE ClientSize(HWND control) {
    RECT client{};
    GetClientRect(control, &client);
    return {client.right, client.bottom};
}

Caption Plain(const std::string& where, HWND control, const std::wstring& text, SIZE round) {
    const SIZE size = TextSize(control, text);
    return {where, {size.cx + round.cx, size.cy + round.cy}, size.cx, ClientSize(control)};
}

// A label breaks its text between words; the ends of all lines but the last are lost to that.
Caption LabelOf(const std::string& where, HWND label) {
    Caption caption = Plain(where, label, CaptionOf(label), {});
    const LONG lines = std::max(1L, caption.room.cy / caption.needed.cy);
    caption.room.cx = caption.room.cx * lines - (lines - 1) * caption.room.cx / 4;
    return caption;
}

std::vector<Caption> Items(const std::string& where, HWND combo) {
    std::vector<Caption> captions;
    for (const std::wstring& item : ComboItems(combo)) {
        captions.push_back(Plain(
            where, combo, item,
            {2 * Scaled(kTextBoxMargin) + GetSystemMetrics(SM_CXVSCROLL), 2 * GetSystemMetrics(SM_CYEDGE)}));
    }
    return captions;
}

std::vector<Caption> HeadingsOf(const std::string& where, HWND list) {
    std::vector<Caption> captions;
    const HWND header = ListView_GetHeader(list);
    const Rows headings = Headings(list);
    for (size_t column = 0; column < headings.size(); ++column) {
        Caption caption = Plain(where, header, headings[column], {2 * Scaled(kHeadingMargin), 0});
        caption.room.cx = ListView_GetColumnWidth(list, static_cast<int>(column));
        captions.push_back(caption);
    }
    return captions;
}

// The row of tabs is as wide as its texts and a fixed amount for each tab.
Caption TabsOf(const std::string& where, HWND tabs) {
    const RECT strip = StripOf(tabs);
    Caption caption{where, {strip.right - strip.left, strip.bottom - strip.top}, 0, ClientSize(tabs)};
    const auto count = static_cast<int>(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int tab = 0; tab < count; ++tab)
        caption.text += TextSize(tabs, TabText(tabs, tab)).cx;
    return caption;
}

Caption TextBoxOf(const std::string& where, HWND box) {
    RECT room{};
    SendMessageW(box, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
    const std::wstring text = ShownText(box);
    const SIZE size = TextSize(box, text.empty() ? L"1024" : text);
    const HWND next = GetWindow(box, GW_HWNDNEXT);
    const bool hasSpin = next != nullptr && ClassOf(next) == UPDOWN_CLASSW;
    const LONG spin = hasSpin ? ClientSize(next).cx : 0;
    return {where, {size.cx + spin, size.cy}, 0, {room.right - room.left, room.bottom - room.top}};
}

}  // namespace

int Dpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

int Scaled(int pixels) {
    return MulDiv(pixels, Dpi(), 96);
}

std::vector<Caption> CaptionsOf(const std::string& where, HWND control) {
    const std::wstring text = CaptionOf(control);
    switch (RoleOf(control)) {
        case Role::Text:
            return {LabelOf(where, control)};
        case Role::Link:
            return {Plain(where, control, text, {})};
        case Role::Button:
            return {
                Plain(where, control, text, {2 * Scaled(kButtonMargin), 2 * GetSystemMetrics(SM_CYEDGE)})};
        case Role::CheckBox:
        case Role::OptionButton:
            return {Plain(where, control, text, {GetSystemMetrics(SM_CXMENUCHECK) + Scaled(kGlyphGap), 0})};
        case Role::Frame:
            return {Plain(where, control, text, {2 * Scaled(kFrameMargin), 0})};
        case Role::Combo:
            return Items(where, control);
        case Role::List:
            if (ClassOf(control) == WC_LISTVIEWW) return HeadingsOf(where, control);
            return {Plain(where, control, L"www.example.com", {2 * Scaled(kListRowMargin), 0})};
        case Role::Tabs:
            return {TabsOf(where, control)};
        case Role::TextBox:
            return {TextBoxOf(where, control)};
        case Role::Picture:
        case Role::Spin:
            break;
    }
    return {};
}

Caption TitleOf(const std::string& where, HWND window) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
    const HDC screen = GetDC(nullptr);
    const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
    const HGDIOBJ before = SelectObject(screen, font);
    RECT bounds{};
    DrawTextW(screen, ShownText(window).c_str(), -1, &bounds, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(screen, before);
    DeleteObject(font);
    ReleaseDC(nullptr, screen);

    const DWORD style = StyleOf(window);
    const int buttons = (style & WS_MINIMIZEBOX) != 0 ? 3 : 1;
    const RECT whole = BoundsOf(window);
    const int round = buttons * GetSystemMetrics(SM_CXSIZE) + GetSystemMetrics(SM_CXSMICON) +
                      2 * GetSystemMetrics(SM_CXDLGFRAME) + Scaled(kTextBoxMargin);
    return {where + ", title",
            {bounds.right + round, bounds.bottom},
            bounds.right,
            {whole.right - whole.left, GetSystemMetrics(SM_CYCAPTION)}};
}
