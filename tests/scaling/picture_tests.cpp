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
#include "tests/support/import_fake.h"

namespace {

constexpr int kSmallIcon = 16;       // in pixels of 96 dpi, as all sizes here
constexpr SIZE kRowPicture{22, 16};  // a small icon and the air beside it

void CheckSize(HICON icon, int pixels) {
    ICONINFO info{};
    BITMAP bitmap{};
    REQUIRE(GetIconInfo(icon, &info));
    GetObjectW(info.hbmMask, sizeof(bitmap), &bitmap);
    // A picture of two colours has both its masks in one.
    const LONG height = info.hbmColor == nullptr ? bitmap.bmHeight / 2 : bitmap.bmHeight;
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
    CHECK(bitmap.bmWidth == pixels);
    CHECK(height == pixels);
}

bool HasPictureOfSize(int icon, int size) {
    // In bytes. A picture's entry begins with its width.
    constexpr size_t kHeader = 6;
    constexpr size_t kEntry = 14;
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(icon), RT_GROUP_ICON);
    REQUIRE(resource != nullptr);
    const auto* const bytes = static_cast<const BYTE*>(LockResource(LoadResource(nullptr, resource)));
    for (size_t i = 0; i < bytes[4]; ++i) {
        if (bytes[kHeader + i * kEntry] == size) return true;
    }
    return false;
}

struct Pictures : InsideWithoutEngine {
    Pictures() { Instance(FormHide); }

    // Those of the window, when it lies on a monitor of this resolution.
    void CheckWindow(int dpi) const {
        for (const auto& [kind, size] : {std::pair{ICON_SMALL, kSmallIcon}, {ICON_BIG, 2 * kSmallIcon}}) {
            const LRESULT icon = SendMessageW(Window(), WM_GETICON, static_cast<WPARAM>(kind), 0);
            CheckSize(reinterpret_cast<HICON>(icon), MulDiv(size, dpi, kDefaultDpi));
        }
        for (const int list : {IDC_LVWBANNERS, IDC_LVWSEARCHURLS}) {
            const HIMAGELIST images = ListView_GetImageList(ControlOf(list), LVSIL_SMALL);
            int width = 0;
            int height = 0;
            REQUIRE(ImageList_GetIconSize(images, &width, &height));
            CHECK(ImageList_GetImageCount(images) == 2);
            CHECK(width == MulDiv(kRowPicture.cx, dpi, kDefaultDpi));
            CHECK(height == MulDiv(kRowPicture.cy, dpi, kDefaultDpi));
        }
        // The largest logo that its place has space for, and not smaller than the resolution asks for.
        const std::map<int, INT_PTR> logos{
            {96, IDG_LOGO_96}, {120, IDG_LOGO_120}, {144, IDG_LOGO_144}, {192, IDG_LOGO_192}};
        RECT box{};
        GetClientRect(ControlOf(IDC_IMGLOGO), &box);
        const auto& [pixels, logo] = *std::prev(logos.upper_bound(std::min(box.right, box.bottom)));
        CHECK(pixels >= dpi);
        CHECK(lastLogo == logo);
    }

    // The one at rest and the three frames, when the taskbar lies on a monitor of this resolution.
    static void CheckTray(int dpi) {
        std::vector<ComPtr<IDispatch>> pictures(4);
        REQUIRE(g_frmConfig->get_picShellIcon(&pictures[0]) == S_OK);
        for (short frame = 0; frame < 3; ++frame)
            REQUIRE(g_frmConfig->get_picTray(frame, &pictures[static_cast<size_t>(frame) + 1]) == S_OK);
        for (const ComPtr<IDispatch>& picture : pictures)
            CheckSize(IconOf(picture.Get()), MulDiv(kSmallIcon, dpi, kDefaultDpi));
    }

    INT_PTR lastLogo = 0;
    const ImportFake<"FindResourceW", decltype(&FindResourceW)> find{
        "kernel32.dll", [this](HMODULE module, LPCWSTR name, LPCWSTR type) {
            if (type == RT_RCDATA) lastLogo = reinterpret_cast<INT_PTR>(name);
            return find.Original(module, name, type);
        }};
};

int taskbarDpi = 0;

UINT WINAPI DpiForWindow(HWND) {
    return static_cast<UINT>(taskbarDpi);
}

}  // namespace

TEST_CASE("icons are drawn for the size that they have at this resolution") {
    CHECK(GetSystemMetrics(SM_CXSMICON) == MulDiv(kSmallIcon, Dpi(), kDefaultDpi));
    for (const int icon : {IDI_CALVANE, IDI_TRAY_REST, IDI_TRAY_0, IDI_TRAY_1, IDI_TRAY_2}) {
        CAPTURE(icon);
        CHECK(HasPictureOfSize(icon, GetSystemMetrics(SM_CXSMICON)));
    }
    for (const int icon : {IDI_LIST_BANNER, IDI_LIST_SEARCH}) {
        CAPTURE(icon);
        CHECK(HasPictureOfSize(icon, MulDiv(kRowPicture.cx, Dpi(), kDefaultDpi)));
    }
}

TEST_CASE_FIXTURE(Pictures, "icons and logo have the size for their monitor, and follow a move to another") {
    CheckWindow(Dpi());
    for (const int dpi : {120, 192, 144, 96, 192, 96}) {
        CAPTURE(dpi);
        MoveToMonitor(Window(), dpi);
        CheckWindow(dpi);
    }
}

TEST_CASE_FIXTURE(Pictures,
                  "the tray's pictures have the size for the taskbar, and follow it to another monitor") {
    CheckTray(Dpi());
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [&](HMODULE library, LPCSTR name) {
            return std::string_view(name) == "GetDpiForWindow"
                       ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&DpiForWindow))
                       : functions.Original(library, name);
        }};
    for (const int dpi : {144, 96, 192}) {
        CAPTURE(dpi);
        taskbarDpi = dpi;
        SendMessageW(Window(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
        CheckTray(dpi);
    }
}
