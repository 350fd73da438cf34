#include "tests/engine/tray.h"

#include <doctest.h>

#include <shellapi.h>

#include <stdexcept>

#include "store/server_directory.h"
#include "tests/engine/library/tray_record.h"
#include "tests/support/manager.h"

namespace {

// Beside the configuration window, which opens in the middle of the screen.
constexpr POINT kMenuPlace{880, 660};

// A screen that is behind with who has the focus closes a menu that is open already: then it is opened again.
constexpr int kTries = 3;

TrayRecord* MapRecord() {
    const HANDLE memory = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                             sizeof(TrayRecord), kTrayRecordName);
    if (memory == nullptr) throw std::runtime_error("no memory to share");
    return static_cast<TrayRecord*>(MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, sizeof(TrayRecord)));
}

// Until the process ends, so that a manager that ends late has it too.
TrayRecord& Record() {
    static TrayRecord* const record = MapRecord();
    return *record;
}

bool MenuCloses() {
    return WaitUntil([] { return OpenMenu() == nullptr && Record().menusClosed == Record().menusShown; });
}

bool IsChosen(wchar_t mnemonic) {
    PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
    REQUIRE(MenuCloses());
    return Record().chosen != 0;
}

}  // namespace

std::wstring BeginTrayRecord() {
    ZeroMemory(&Record(), sizeof(TrayRecord));
    return ServerDirectory() + L"\\tray_recorder.dll";
}

bool ShellHasIcon(HWND configWindow) {
    // A change of nothing succeeds exactly where there is an icon.
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = configWindow;
    data.uID = 1;
    return Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
}

int ShownIcons() {
    return Record().added - Record().deleted;
}

int MostIcons() {
    return Record().mostIcons;
}

bool WaitForIcon(int earlier) {
    return WaitUntil(
        [&] { return Record().added > earlier && ShownIcons() == 1 && IconStory().ends_with("add"); });
}

std::string IconStory() {
    return Record().story;
}

void PostGesture(HWND configWindow, UINT mouseMessage) {
    constexpr UINT kCallback = 0x401;
    PostMessageW(configWindow, kCallback, 1, static_cast<LPARAM>(mouseMessage));
}

HWND OpenMenu() {
    const HWND menu = FindWindowW(L"#32768", nullptr);
    return menu != nullptr && IsWindowVisible(menu) ? menu : nullptr;
}

HWND WaitForMenu() {
    HWND menu = nullptr;
    WaitUntil([&] {
        menu = OpenMenu();
        GUITHREADINFO info{};
        info.cbSize = sizeof(info);
        return menu != nullptr && GetGUIThreadInfo(GetWindowThreadProcessId(menu, nullptr), &info) &&
               (info.flags & GUI_INMENUMODE) != 0 && info.hwndCapture != nullptr;
    });
    return menu;
}

std::string PopUpMenu(HWND configWindow) {
    for (int i = 0; i < kTries; ++i) {
        const LONG before = Record().menusShown;
        SetCursorPos(kMenuPlace.x, kMenuPlace.y);
        Sleep(50);
        PostGesture(configWindow, WM_RBUTTONUP);
        const bool isOpen = WaitForMenu() != nullptr;
        REQUIRE(Record().menusShown == before + 1);
        if (isOpen) return Record().menu;
    }
    FAIL("the menu closes at once");
    return {};
}

void CloseMenu() {
    PostMessageW(OpenMenu(), WM_KEYDOWN, VK_ESCAPE, 1);
    REQUIRE(MenuCloses());
}

std::string MenuOf(HWND configWindow) {
    const std::string items = PopUpMenu(configWindow);
    CloseMenu();
    return items;
}

void Choose(wchar_t mnemonic) {
    REQUIRE(IsChosen(mnemonic));
}

void Command(HWND configWindow, wchar_t mnemonic) {
    for (int i = 0; i < kTries; ++i) {
        PopUpMenu(configWindow);
        if (IsChosen(mnemonic)) return;
    }
    FAIL("the menu closes without a choice");
}
