#include "tests/engine/tray.h"

#include <shellapi.h>

#include <map>

#include "app/resource.h"
#include "platform/handle.h"
#include "tests/engine/screen.h"
#include "tests/support/manager.h"
#include "tests/support/plain_window.h"

namespace {

// Beside the configuration window, which opens in the middle of the screen.
constexpr POINT kMenuPlace{880, 660};
constexpr UINT kCallback = 0x401;
constexpr UINT kNone = static_cast<UINT>(-1);

HWND MenuWindow() {
    const HWND menu = FindWindowW(L"#32768", nullptr);
    return menu != nullptr && IsWindowVisible(menu) ? menu : nullptr;
}

// An icon of the manager's resources, as drawn into the middle of an area.
ScreenPicture DrawnIcon(int resource, int width, int height, DWORD background) {
    const int size = GetSystemMetrics(SM_CXSMICON);
    const IconHandle icon(static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource),
                                                        IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
    return Drawn(width, height, background, [&](HDC device) {
        DrawIconEx(device, (width - size) / 2, (height - size) / 2, icon.Get(), size, size, 0, nullptr,
                   DI_NORMAL);
    });
}

// Whether the icon was drawn last. What shines through it is left out: Wine draws a changed icon over the
// earlier one.
bool Shows(const ScreenPicture& shown, int resource) {
    static std::map<int, std::pair<ScreenPicture, ScreenPicture>> known;
    auto& [onWhite, onBlack] = known[resource];
    if (onWhite.width != shown.width || onWhite.height != shown.height) {
        onWhite = DrawnIcon(resource, shown.width, shown.height, 0xFFFFFF);
        onBlack = DrawnIcon(resource, shown.width, shown.height, 0);
    }
    size_t opaque = 0;
    for (size_t i = 0; i < shown.pixels.size(); ++i) {
        if (onWhite.pixels[i] != onBlack.pixels[i]) continue;
        if (shown.pixels[i] != onWhite.pixels[i]) return false;
        ++opaque;
    }
    return opaque > 0;
}

struct Enabled {
    bool start;
    bool stop;
    bool pause;
};

ScreenPicture* tracked = nullptr;

void CALLBACK TakePicture(HWND owner, UINT, UINT_PTR id, DWORD) {
    const HWND menu = MenuWindow();
    if (menu == nullptr) return;
    KillTimer(owner, id);
    *tracked = RestingPictureOf(menu);
    EndMenu();
}

// A menu of the test's own, with what the manager's is to show.
ScreenPicture ExpectedMenu(Enabled enabled, bool pauseIsDefault) {
    const MenuHandle menu(CreatePopupMenu());
    const auto flags = [](bool isEnabled) -> UINT { return isEnabled ? MF_ENABLED : MF_GRAYED; };
    AppendMenuW(menu.Get(), flags(enabled.start), 1, L"&Start Sentrel");
    AppendMenuW(menu.Get(), flags(enabled.stop), 2, L"S&top Sentrel");
    AppendMenuW(menu.Get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu.Get(), flags(enabled.pause), 4, L"&Pause Sentrel");
    AppendMenuW(menu.Get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu.Get(), MF_STRING, 6, L"&Open Calvane Configuration");
    AppendMenuW(menu.Get(), MF_STRING, 7, L"E&xit Calvane");
    SetMenuDefaultItem(menu.Get(), pauseIsDefault ? 4 : kNone, FALSE);

    const PlainWindow owner;
    ScreenPicture picture;
    tracked = &picture;
    MoveMouseTo(kMenuPlace);
    SetTimer(owner.Hwnd(), 1, 20, TakePicture);
    TrackPopupMenuEx(menu.Get(), TPM_LEFTALIGN | TPM_RIGHTBUTTON | TPM_RETURNCMD, kMenuPlace.x, kMenuPlace.y,
                     owner.Hwnd(), nullptr);
    tracked = nullptr;
    return picture;
}

const std::map<MenuLook, Enabled> kLooks{{MenuLook::Designed, {true, true, true}},
                                         {MenuLook::Running, {false, true, true}},
                                         {MenuLook::Stopped, {true, false, false}}};

const std::map<MenuLook, ScreenPicture>& ExpectedMenus() {
    static const std::map<MenuLook, ScreenPicture> pictures = [] {
        std::map<MenuLook, ScreenPicture> all;
        for (const auto& [look, enabled] : kLooks)
            all[look] = ExpectedMenu(enabled, true);
        return all;
    }();
    return pictures;
}

}  // namespace

bool ShellHasIcon(HWND configWindow) {
    // A change of nothing succeeds exactly where there is an icon.
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = configWindow;
    data.uID = 1;
    return Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
}

std::vector<HWND> ShownIcons() {
    std::vector<HWND> icons;
    const HWND area = FindWindowW(L"__winex11_standalone_tray", nullptr);
    HWND icon = nullptr;
    while (area != nullptr &&
           (icon = FindWindowExW(area, icon, L"__winex11_tray_icon", nullptr)) != nullptr) {
        if (IsWindowVisible(icon)) icons.push_back(icon);
    }
    return icons;
}

HWND WaitForIcon() {
    std::vector<HWND> icons;
    WaitUntil([&] { return (icons = ShownIcons()).size() == 1; }, 3000);
    return icons.size() == 1 ? icons[0] : nullptr;
}

IconLook LookOf(HWND icon) {
    constexpr std::pair<int, IconLook> kPictures[] = {{IDI_TRAY_REST, IconLook::Rest},
                                                      {IDI_TRAY_0, IconLook::Frame0},
                                                      {IDI_TRAY_1, IconLook::Frame1},
                                                      {IDI_TRAY_2, IconLook::Frame2}};
    const ScreenPicture shown = PictureOf(icon);
    for (const auto& [resource, look] : kPictures) {
        if (Shows(shown, resource)) return look;
    }
    return IconLook::Other;
}

std::string NameOf(IconLook look) {
    constexpr const char* kNames[] = {"rest", "frame 0", "frame 1", "frame 2", "another"};
    return kNames[static_cast<int>(look)];
}

void PostGesture(HWND configWindow, UINT mouseMessage) {
    PostMessageW(configWindow, kCallback, 1, static_cast<LPARAM>(mouseMessage));
}

HWND OpenMenu() {
    return MenuWindow();
}

HWND WaitForMenu() {
    HWND menu = nullptr;
    WaitUntil([&] {
        menu = MenuWindow();
        GUITHREADINFO info{};
        info.cbSize = sizeof(info);
        return menu != nullptr && GetGUIThreadInfo(GetWindowThreadProcessId(menu, nullptr), &info) &&
               (info.flags & GUI_INMENUMODE) != 0 && info.hwndCapture != nullptr;
    });
    return menu;
}

bool MenuCloses() {
    return WaitUntil([] { return MenuWindow() == nullptr; }, 3000);
}

HWND PopUpMenu(HWND configWindow) {
    // The expected pictures are menus themselves: they come first.
    ExpectedMenus();
    MoveMouseTo(kMenuPlace);
    PostGesture(configWindow, WM_RBUTTONUP);
    const HWND menu = WaitForMenu();
    REQUIRE(menu != nullptr);
    return menu;
}

void CloseMenu() {
    PostMessageW(MenuWindow(), WM_KEYDOWN, VK_ESCAPE, 1);
    REQUIRE(MenuCloses());
}

void Choose(wchar_t mnemonic) {
    PostMessageW(MenuWindow(), WM_CHAR, mnemonic, 1);
    REQUIRE(MenuCloses());
}

void Command(HWND configWindow, wchar_t mnemonic) {
    PopUpMenu(configWindow);
    Choose(mnemonic);
}

MenuLook LookOfOpenMenu() {
    // A window that is still being drawn may have painted over the menu: it soon comes through again.
    MenuLook look = MenuLook::Other;
    WaitUntil(
        [&] {
            const ScreenPicture shown = RestingPictureOf(MenuWindow());
            for (const auto& [known, picture] : ExpectedMenus()) {
                if (picture == shown) look = known;
            }
            return look != MenuLook::Other;
        },
        2000);
    return look;
}

MenuLook LookOfMenu(HWND configWindow) {
    PopUpMenu(configWindow);
    const MenuLook look = LookOfOpenMenu();
    CloseMenu();
    return look;
}
