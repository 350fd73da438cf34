// Whether pictures are those that were drawn for the resolution that this process runs at.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <vector>

#include "tests/entry/window_inside.h"
#include "tests/scaling/captions.h"
#include "tests/scaling/monitor.h"

namespace {

SIZE SizeOf(HICON icon) {
    ICONINFO info{};
    BITMAP bitmap{};
    if (!GetIconInfo(icon, &info)) return {};
    GetObjectW(info.hbmMask, sizeof(bitmap), &bitmap);
    const bool isTwoInOne = info.hbmColor == nullptr;
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
    return {bitmap.bmWidth, isTwoInOne ? bitmap.bmHeight / 2 : bitmap.bmHeight};
}

bool IsSmallIcon(HICON icon) {
    const SIZE size = SizeOf(icon);
    return size.cx == GetSystemMetrics(SM_CXSMICON) && size.cy == GetSystemMetrics(SM_CYSMICON);
}

// A small icon and the air beside it, in pixels of 96 dpi.
constexpr SIZE kRowPicture{22, 16};

void CheckRowPictures(int dpi) {
    for (const int list : {IDC_LVWBANNERS, IDC_LVWSEARCHURLS}) {
        const HIMAGELIST images = ListView_GetImageList(ControlOf(list), LVSIL_SMALL);
        int width = 0;
        int height = 0;
        REQUIRE(ImageList_GetIconSize(images, &width, &height));
        CHECK(ImageList_GetImageCount(images) == 2);
        CHECK(width == MulDiv(kRowPicture.cx, dpi, kDefaultDpi));
        CHECK(height == MulDiv(kRowPicture.cy, dpi, kDefaultDpi));
    }
}

// In bytes. A picture's entry begins with its width.
constexpr size_t kDirectoryHeader = 6;
constexpr size_t kDirectoryEntry = 14;

bool HasPictureOfSize(int icon, int size) {
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(icon), RT_GROUP_ICON);
    REQUIRE(resource != nullptr);
    const auto* const bytes = static_cast<const BYTE*>(LockResource(LoadResource(nullptr, resource)));
    const int count = bytes[4];
    for (int i = 0; i < count; ++i) {
        if (bytes[kDirectoryHeader + static_cast<size_t>(i) * kDirectoryEntry] == size) return true;
    }
    return false;
}

// The one at rest and the three frames.
std::vector<ComPtr<IDispatch>> TrayPictures() {
    std::vector<ComPtr<IDispatch>> pictures(4);
    REQUIRE(g_frmConfig->get_picShellIcon(&pictures[0]) == S_OK);
    for (short frame = 0; frame < 3; ++frame)
        REQUIRE(g_frmConfig->get_picTray(frame, &pictures[static_cast<size_t>(frame) + 1]) == S_OK);
    return pictures;
}

// A taskbar on a monitor of another resolution than the window's.
struct Taskbar {
    Taskbar() { s_patch = &patch; }

    static UINT WINAPI DpiForWindow(HWND window) {
        return static_cast<UINT>(window == Window() ? Dpi() : s_dpi);
    }

    static FARPROC WINAPI Find(HMODULE library, LPCSTR name) {
        if (std::string_view(name) != "GetDpiForWindow") {
            return s_patch->Original<decltype(&GetProcAddress)>()(library, name);
        }
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&DpiForWindow));
    }

    static inline int s_dpi = 0;
    static inline const ImportPatch* s_patch = nullptr;
    const ImportPatch patch{"kernel32.dll", "GetProcAddress", &Find};
};

// Notes which logo was asked for last.
struct Logo {
    Logo() { s_patch = &patch; }

    static HRSRC WINAPI Find(HMODULE module, LPCWSTR name, LPCWSTR type) {
        if (type == RT_RCDATA) s_asked = reinterpret_cast<INT_PTR>(name);
        return s_patch->Original<decltype(&FindResourceW)>()(module, name, type);
    }

    static inline INT_PTR s_asked = 0;
    static inline const ImportPatch* s_patch = nullptr;
    const ImportPatch patch{"kernel32.dll", "FindResourceW", &Find};
};

// It is the largest that its place has space for, and not smaller than the resolution asks for.
void CheckLogo(int dpi) {
    const std::map<int, INT_PTR> logos{
        {96, IDG_LOGO_96}, {120, IDG_LOGO_120}, {144, IDG_LOGO_144}, {192, IDG_LOGO_192}};
    RECT box{};
    GetClientRect(ControlOf(IDC_IMGLOGO), &box);
    const auto& [pixels, logo] = *std::prev(logos.upper_bound(std::min(box.right, box.bottom)));
    CHECK(pixels >= dpi);
    CHECK(Logo::s_asked == logo);
}

}  // namespace

TEST_CASE("icons have the size of the system's small icons, and are drawn for it") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    for (const ComPtr<IDispatch>& picture : TrayPictures())
        CHECK(IsSmallIcon(IconOf(picture.Get())));
    CHECK(IsSmallIcon(reinterpret_cast<HICON>(SendMessageW(Window(), WM_GETICON, ICON_SMALL, 0))));

    CheckRowPictures(Dpi());
    CHECK(GetSystemMetrics(SM_CXSMICON) == MulDiv(16, Dpi(), 96));
    for (const int icon : {IDI_CALVANE, IDI_TRAY_REST, IDI_TRAY_0, IDI_TRAY_1, IDI_TRAY_2}) {
        CAPTURE(icon);
        CHECK(HasPictureOfSize(icon, GetSystemMetrics(SM_CXSMICON)));
    }
    for (const int icon : {IDI_LIST_BANNER, IDI_LIST_SEARCH}) {
        CAPTURE(icon);
        CHECK(HasPictureOfSize(icon, MulDiv(kRowPicture.cx, Dpi(), kDefaultDpi)));
    }
}

TEST_CASE("icons and logo follow a move between monitors") {
    const Logo logo;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    CheckLogo(Dpi());
    for (const int dpi : {120, 192, 144, 96, 192, 96}) {
        CAPTURE(dpi);
        MoveToMonitor(Window(), dpi);
        CheckRowPictures(dpi);
        const auto icon = [](WPARAM kind) {
            return SizeOf(reinterpret_cast<HICON>(SendMessageW(Window(), WM_GETICON, kind, 0)));
        };
        CHECK(icon(ICON_SMALL).cx == MulDiv(16, dpi, kDefaultDpi));
        CHECK(icon(ICON_BIG).cx == MulDiv(32, dpi, kDefaultDpi));
        CheckLogo(dpi);
    }
}

TEST_CASE("the tray's pictures follow the taskbar to another monitor") {
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const Taskbar taskbar;
    for (const int dpi : {144, 96, 192}) {
        CAPTURE(dpi);
        Taskbar::s_dpi = dpi;
        SendMessageW(Window(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
        for (const ComPtr<IDispatch>& picture : TrayPictures())
            CHECK(SizeOf(IconOf(picture.Get())).cx == MulDiv(16, dpi, kDefaultDpi));
    }
}
