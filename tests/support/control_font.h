// The font that a control writes in.
#pragma once

#include <windows.h>

#include <string>

// What body makes of a device context that writes as the control does.
template <class Body>
auto InFontOf(HWND control, Body body) {
    const HDC dc = GetDC(control);
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ before = SelectObject(dc, font != nullptr ? font : GetStockObject(SYSTEM_FONT));
    const auto result = body(dc);
    SelectObject(dc, before);
    ReleaseDC(control, dc);
    return result;
}

// As DrawText writes the text, on one line; width counts where it breaks lines.
inline SIZE SizeOfText(HWND control, const std::wstring& text, UINT format = DT_SINGLELINE | DT_NOPREFIX,
                       LONG width = 0) {
    return InFontOf(control, [&](HDC dc) {
        RECT bounds{0, 0, width, 0};
        DrawTextW(dc, text.c_str(), -1, &bounds, DT_CALCRECT | format);
        return SIZE{bounds.right, bounds.bottom};
    });
}

// Of the letters, as the system was asked for it.
inline LONG FontHeightOf(HWND control) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof(font), &font);
    return -font.lfHeight;
}
