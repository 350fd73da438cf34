#include "tests/scaling/captions.h"

#include <commctrl.h>

#include <algorithm>

#include "platform/text.h"
#include "tests/support/other_process.h"

namespace {

constexpr int kButtonMargin = 5;   // on each side, border and focus rectangle
constexpr int kGlyphGap = 4;       // between a check box and its text
constexpr int kFrameMargin = 8;    // before and behind the text in the upper edge of a frame
constexpr int kHeadingMargin = 6;  // on each side
constexpr int kTextBoxMargin = 3;  // on each side
constexpr int kListRowMargin = 4;
constexpr int kTabStripMargin = 2;  // before and behind all tabs; the chosen one reaches into it

// Longer by so many per cent, made of its own words.
std::wstring Lengthened(const std::wstring& text, int percent) {
    const size_t added = text.size() * static_cast<size_t>(percent) / 100;
    return added == 0 ? text : text + L' ' + text.substr(0, added - 1);
}

// A device context that measures in a font, or in the control's own.
class FontMeter {
public:
    FontMeter(HWND window, HFONT font) : m_window(window), m_dc(GetDC(window)) {
        m_before = SelectObject(m_dc, font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    }
    explicit FontMeter(HWND control)
        : FontMeter(control, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0))) {}
    FontMeter(const FontMeter&) = delete;
    FontMeter& operator=(const FontMeter&) = delete;
    ~FontMeter() {
        SelectObject(m_dc, m_before);
        ReleaseDC(m_window, m_dc);
    }

    // The size of the text as DrawText writes it; width counts where it breaks lines.
    SIZE Measure(const std::wstring& text, UINT format, LONG width = 0) const {
        RECT bounds{0, 0, width, 0};
        DrawTextW(m_dc, text.c_str(), -1, &bounds, DT_CALCRECT | format);
        return {bounds.right, bounds.bottom};
    }

    // The name of the font that the system has found, whatever was asked for.
    std::wstring Face() const {
        wchar_t name[LF_FACESIZE]{};
        GetTextFaceW(m_dc, LF_FACESIZE, name);
        return name;
    }

private:
    HWND m_window;
    HDC m_dc;
    HGDIOBJ m_before;
};

SIZE ClientSize(HWND control) {
    RECT client{};
    GetClientRect(control, &client);
    return {client.right, client.bottom};
}

// format: DT_NOPREFIX, or 0 where the character after a "&" is drawn as the access key.
Caption OneLine(HWND control, const std::wstring& text, SIZE round, UINT format = DT_NOPREFIX) {
    const SIZE size = FontMeter(control).Measure(text, DT_SINGLELINE | format);
    return {{size.cx + round.cx, size.cy + round.cy}, ClientSize(control)};
}

std::vector<Caption> Items(HWND combo, int longer) {
    std::vector<Caption> captions;
    for (const std::wstring& item : ComboItems(combo)) {
        captions.push_back(OneLine(
            combo, Lengthened(item, longer),
            {2 * Scaled(kTextBoxMargin) + GetSystemMetrics(SM_CXVSCROLL), 2 * GetSystemMetrics(SM_CYEDGE)}));
    }
    return captions;
}

std::vector<Caption> HeadingsOf(HWND list, int longer) {
    std::vector<Caption> captions;
    const HWND header = ListView_GetHeader(list);
    const Rows headings = Headings(list);
    for (size_t column = 0; column < headings.size(); ++column) {
        Caption caption =
            OneLine(header, Lengthened(headings[column], longer), {2 * Scaled(kHeadingMargin), 0});
        caption.space.cx = ListView_GetColumnWidth(list, static_cast<int>(column));
        captions.push_back(caption);
    }
    return captions;
}

// The row of tabs is as wide as its texts and a fixed amount for each tab. Where that is too much it
// scrolls, and a tab out of sight has an empty rectangle and no space at all.
Caption TabsOf(HWND tabs, int longer) {
    Caption caption{{2 * kTabStripMargin, 0}, ClientSize(tabs)};
    for (int tab = 0; tab < TabCtrl_GetItemCount(tabs); ++tab) {
        RECT item{};
        TabCtrl_GetItemRect(tabs, tab, &item);
        if (IsRectEmpty(&item)) item.right = caption.space.cx + 1;
        const std::wstring text = TabText(tabs, tab);
        caption.needed.cx += item.right - item.left + SizeOfText(tabs, Lengthened(text, longer)).cx -
                             SizeOfText(tabs, text).cx;
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
    const bool hasSpin = next != nullptr && ClassOf(next) == UPDOWN_CLASSW;
    Caption caption = OneLine(box, text.empty() ? L"1024" : text, {hasSpin ? ClientSize(next).cx : 0, 0});
    caption.space = {space.right - space.left, space.bottom - space.top};
    return caption;
}

}  // namespace

int Scaled(int pixels) {
    return MulDiv(pixels, Dpi(), kDefaultDpi);
}

SIZE SizeOfText(HWND control, const std::wstring& text) {
    return FontMeter(control).Measure(text, DT_SINGLELINE | DT_NOPREFIX);
}

std::wstring FontOf(HWND control) {
    return FontMeter(control).Face();
}

LONG FontHeightOf(HWND control) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof(font), &font);
    return -font.lfHeight;
}

std::vector<Caption> CaptionsOf(HWND control, int longer) {
    const std::wstring text = Lengthened(CaptionOf(control), longer);
    switch (RoleOf(control)) {
        case Role::Text:
            // It breaks between words.
            return {{FontMeter(control).Measure(text, DT_WORDBREAK, ClientSize(control).cx),
                     ClientSize(control)}};
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
            return Items(control, longer);
        case Role::ListView:
            return HeadingsOf(control, longer);
        case Role::ListBox:
            return {OneLine(control, L"www.example.com", {2 * Scaled(kListRowMargin), 0})};
        case Role::Tabs:
            return {TabsOf(control, longer)};
        case Role::TextBox:
            return {TextBoxOf(control)};
        case Role::Picture:
        case Role::Spin:
            break;
    }
    return {};
}

Caption TitleOf(const Surface& surface, int longer) {
    const HWND window = surface.window;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
    const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
    const SIZE text =
        FontMeter(window, font).Measure(Lengthened(ShownText(window), longer), DT_SINGLELINE | DT_NOPREFIX);
    DeleteObject(font);

    const DWORD style = StyleOf(window);
    const int buttons = (style & WS_MINIMIZEBOX) != 0 ? 3 : 1;
    const RECT whole = BoundsOf(window);
    const int round = buttons * GetSystemMetrics(SM_CXSIZE) + GetSystemMetrics(SM_CXSMICON) +
                      2 * GetSystemMetrics(SM_CXDLGFRAME) + Scaled(kTextBoxMargin);
    return {{text.cx + round, text.cy}, {whole.right - whole.left, GetSystemMetrics(SM_CYCAPTION)}};
}
