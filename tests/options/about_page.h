// What the tests of the link and of the logo share: the About page with a shell that opens addresses, and
// what a control draws.
#pragma once

#include <windows.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"

// A window whose link shows an address. The shell has no program for any.
struct AboutPageFixture : SettingsWindow {
    struct Opened {
        HWND owner;
        std::string verb;
        std::string file;
        bool hasParameters;
        bool hasDirectory;
        int show;
    };

    AboutPageFixture() {
        s_opened = &opened;
        lblNavSite.Caption(L"http://www.calvane.example/");
    }

    static void Resize(const Control& control, int width, int height) {
        SetWindowPos(control.Hwnd(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }

    std::vector<Opened> opened;

private:
    static HINSTANCE WINAPI Execute(HWND owner, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                                    INT show) {
        s_opened->push_back({owner, verb, file, parameters != nullptr, directory != nullptr, show});
        return reinterpret_cast<HINSTANCE>(SE_ERR_NOASSOC);
    }

    static inline std::vector<Opened>* s_opened = nullptr;
    const ImportPatch m_patch{"shell32.dll", "ShellExecuteA", &Execute};
};

// What a control draws into its client area, over a colour of its own.
class Drawing {
public:
    static constexpr COLORREF kBefore = RGB(1, 254, 3);

    explicit Drawing(const Control& control) {
        RECT bounds;
        GetClientRect(control.Hwnd(), &bounds);
        const HDC screen = GetDC(nullptr);
        m_dc = CreateCompatibleDC(screen);
        m_bitmap = CreateCompatibleBitmap(screen, bounds.right, bounds.bottom);
        ReleaseDC(nullptr, screen);
        m_old = SelectObject(m_dc, m_bitmap);
        const HBRUSH brush = CreateSolidBrush(kBefore);
        FillRect(m_dc, &bounds, brush);
        DeleteObject(brush);
        SendMessageW(control.Hwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(m_dc), PRF_CLIENT);
    }
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;
    ~Drawing() {
        SelectObject(m_dc, m_old);
        DeleteObject(m_bitmap);
        DeleteDC(m_dc);
    }

    COLORREF At(int x, int y) const { return GetPixel(m_dc, x, y); }

private:
    HDC m_dc;
    HBITMAP m_bitmap;
    HGDIOBJ m_old;
};
