#include "platform/controls/dialog_layout.h"

#include <cstring>

#include "platform/dpi.h"

namespace {

constexpr WORD kOrdinal = 0xFFFF;

// In dialog units: quarters of the width and eighths of the height of the font's letters.
struct Item {
    int id;
    RECT place;
};

// Reads the parts of an extended dialog template, whose layout the dialog manager fixes, one after the other.
class TemplateReader {
public:
    explicit TemplateReader(int resourceId) noexcept
        : m_next(static_cast<const BYTE*>(LockResource(
              LoadResource(nullptr, FindResourceW(nullptr, MAKEINTRESOURCEW(resourceId), RT_DIALOG))))) {
        Skip<WORD>(2);   // version and signature
        Skip<DWORD>(2);  // help id and extended style
        const auto style = Read<DWORD>();
        m_itemsLeft = Read<WORD>();
        m_place = ReadPlace();
        SkipOrdinalOrText();  // menu
        SkipOrdinalOrText();  // class
        SkipText();           // title
        if ((style & DS_SETFONT) != 0) {
            Skip<WORD>(3);  // size, weight, italic and character set
            SkipText();
        }
    }

    // Of the dialog itself.
    const RECT& Place() const noexcept { return m_place; }

    // The next of the controls; false after the last.
    bool ReadItem(Item& item) noexcept {
        if (m_itemsLeft-- == 0) return false;
        AlignTo(sizeof(DWORD));
        Skip<DWORD>(3);  // help id, extended style and style
        item.place = ReadPlace();
        item.id = static_cast<int>(Read<DWORD>());
        SkipOrdinalOrText();  // class
        SkipOrdinalOrText();  // title
        const auto extra = Read<WORD>();
        Skip<BYTE>(extra);
        return true;
    }

private:
    template <class Value>
    Value Read() noexcept {
        Value value;
        std::memcpy(&value, m_next, sizeof(value));
        m_next += sizeof(value);
        return value;
    }

    template <class Value>
    void Skip(size_t count) noexcept {
        m_next += count * sizeof(Value);
    }

    RECT ReadPlace() noexcept {
        const LONG left = Read<short>();
        const LONG top = Read<short>();
        const LONG width = Read<short>();
        return {left, top, left + width, top + Read<short>()};
    }

    void SkipText() noexcept {
        while (Read<WORD>() != 0) {
        }
    }

    // A menu, a class or the title of a control is either a number or a text.
    void SkipOrdinalOrText() noexcept {
        const WORD first = Read<WORD>();
        if (first == kOrdinal) Skip<WORD>(1);
        if (first != kOrdinal && first != 0) SkipText();
    }

    // Resources begin on such a boundary.
    void AlignTo(size_t boundary) noexcept {
        const auto address = reinterpret_cast<UINT_PTR>(m_next);
        m_next += (boundary - address % boundary) % boundary;
    }

    const BYTE* m_next;
    int m_itemsLeft = 0;
    RECT m_place{};
};

FontHandle MessageFontHandle(int dpi) {
    LOGFONTW font{};
    return FontHandle(MessageFont(dpi, font) ? CreateFontIndirectW(&font) : nullptr);
}

// Four units across and eight down, in pixels, as the dialog manager measures them.
SIZE UnitsOf(HFONT font) {
    constexpr wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int kLetterCount = 52;

    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, font);
    TEXTMETRICW metrics{};
    SIZE extent{};
    GetTextMetricsW(screen, &metrics);
    GetTextExtentPoint32W(screen, kLetters, kLetterCount, &extent);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return {(extent.cx / (kLetterCount / 2) + 1) / 2, metrics.tmHeight};
}

RECT InPixels(const RECT& place, SIZE units) {
    const LONG left = MulDiv(place.left, units.cx, 4);
    const LONG top = MulDiv(place.top, units.cy, 8);
    return {left, top, left + MulDiv(place.right - place.left, units.cx, 4),
            top + MulDiv(place.bottom - place.top, units.cy, 8)};
}

SIZE SizeInFrame(HWND dialog, const RECT& place, SIZE units, int dpi) {
    RECT bounds = InPixels(place, units);
    AddFrame(bounds, static_cast<DWORD>(GetWindowLongW(dialog, GWL_STYLE)),
             static_cast<DWORD>(GetWindowLongW(dialog, GWL_EXSTYLE)), dpi);
    return {bounds.right - bounds.left, bounds.bottom - bounds.top};
}

}  // namespace

void DialogLayout::Apply(HWND dialog, int dpi) noexcept {
    FontHandle font = MessageFontHandle(dpi);
    if (!font) return;
    TemplateReader reader(m_resourceId);
    const SIZE units = UnitsOf(font.Get());
    const auto fontParameter = reinterpret_cast<WPARAM>(font.Get());
    const SIZE size = SizeInFrame(dialog, reader.Place(), units, dpi);
    SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    for (Item item; reader.ReadItem(item);) {
        const HWND control = GetDlgItem(dialog, item.id);
        SendMessageW(control, WM_SETFONT, fontParameter, FALSE);
        const RECT place = InPixels(item.place, units);
        SetWindowPos(control, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    InvalidateRect(dialog, nullptr, TRUE);
    m_font = std::move(font);  // nothing uses the one before any more
}

SIZE DialogLayout::WindowSize(HWND dialog, int dpi) const noexcept {
    const FontHandle font = MessageFontHandle(dpi);
    return SizeInFrame(dialog, TemplateReader(m_resourceId).Place(), UnitsOf(font.Get()), dpi);
}
