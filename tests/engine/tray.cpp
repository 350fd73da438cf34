#include "tests/engine/tray.h"

#include <shellapi.h>

#include <stdexcept>

#include "app/resource.h"
#include "store/server_directory.h"
#include "tests/support/manager.h"

namespace {

// Beside the configuration window, which opens in the middle of the screen.
constexpr POINT kMenuPlace{880, 660};
constexpr UINT kCallback = 0x401;

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

int Done(DWORD action) {
    int count = 0;
    for (const ShellCall& call : ShellCalls())
        count += call.action == action && call.done != FALSE;
    return count;
}

const char* NameOf(int picture) {
    switch (picture) {
        case IDI_TRAY_REST:
            return "rest";
        case IDI_TRAY_0:
            return "frame 0";
        case IDI_TRAY_1:
            return "frame 1";
        case IDI_TRAY_2:
            return "frame 2";
        default:
            return "another";
    }
}

std::string NameOf(const ShellCall& call) {
    std::string name = NameOf(call.picture);
    if (call.action == NIM_ADD) name = "add " + name;
    if (call.action == NIM_DELETE) name = "delete";
    return call.done != FALSE ? name : name + " (refused)";
}

std::wstring DesignedMenu(wchar_t start, wchar_t stop, wchar_t pause) {
    return start + std::wstring(L"&Start Sentrel\n") + stop + L"S&top Sentrel\n-\n*" + pause +
           L"&Pause Sentrel\n-\n+&Open Calvane Configuration\n+E&xit Calvane\n";
}

}  // namespace

std::wstring BeginTrayRecord() {
    Record().calls = 0;
    Record().menusShown = 0;
    Record().menusClosed = 0;
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
    return Done(NIM_ADD) - Done(NIM_DELETE);
}

bool WaitForIcon() {
    return WaitForIconAfter(0);
}

bool WaitForIconAfter(int added) {
    return WaitUntil([&] {
        const std::vector<ShellCall> calls = ShellCalls();
        return Done(NIM_ADD) > added && ShownIcons() == 1 && NameOf(calls.back()) == "add rest";
    });
}

std::vector<ShellCall> ShellCalls() {
    return {Record().call, Record().call + Record().calls};
}

std::string IconStory(size_t first) {
    const std::vector<ShellCall> calls = ShellCalls();
    std::string story;
    for (size_t i = first; i < calls.size(); ++i)
        story += (story.empty() ? "" : ", ") + NameOf(calls[i]);
    return story;
}

void PostGesture(HWND configWindow, UINT mouseMessage) {
    PostMessageW(configWindow, kCallback, 1, static_cast<LPARAM>(mouseMessage));
}

void MoveMouseTo(POINT position) {
    SetCursorPos(position.x, position.y);
    Sleep(50);
}

void LeftClick() {
    INPUT input{};
    input.type = INPUT_MOUSE;
    for (const DWORD flags : {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP}) {
        input.mi.dwFlags = flags;
        SendInput(1, &input, sizeof(input));
    }
}

void TypeKey(WORD virtualKey) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    for (const DWORD flags : {DWORD{0}, DWORD{KEYEVENTF_KEYUP}}) {
        input.ki.dwFlags = flags;
        SendInput(1, &input, sizeof(input));
    }
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

bool MenuCloses() {
    return WaitUntil([] { return OpenMenu() == nullptr && Record().menusClosed == Record().menusShown; });
}

HWND PopUpMenu(HWND configWindow) {
    for (int i = 0; i < kTries; ++i) {
        const LONG before = Record().menusShown;
        MoveMouseTo(kMenuPlace);
        PostGesture(configWindow, WM_RBUTTONUP);
        const HWND menu = WaitForMenu();
        REQUIRE(Record().menusShown == before + 1);
        if (menu != nullptr) return menu;
    }
    FAIL("the menu closes at once");
    return nullptr;
}

void CloseMenu() {
    PostMessageW(OpenMenu(), WM_KEYDOWN, VK_ESCAPE, 1);
    REQUIRE(MenuCloses());
}

void Choose(wchar_t mnemonic) {
    PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
    REQUIRE(MenuCloses());
    REQUIRE(Record().chosen != 0);
}

void Command(HWND configWindow, wchar_t mnemonic) {
    for (int i = 0; i < kTries; ++i) {
        PopUpMenu(configWindow);
        PostMessageW(OpenMenu(), WM_CHAR, mnemonic, 1);
        REQUIRE(MenuCloses());
        if (Record().chosen != 0) return;
    }
    FAIL("the menu closes without a choice");
}

MenuLook LookOfOpenMenu() {
    const std::wstring shown = Record().menu;
    if (shown == DesignedMenu(L'+', L'+', L'+')) return MenuLook::Designed;
    if (shown == DesignedMenu(L'x', L'+', L'+')) return MenuLook::Running;
    if (shown == DesignedMenu(L'+', L'x', L'x')) return MenuLook::Stopped;
    return MenuLook::Other;
}

MenuLook LookOfMenu(HWND configWindow) {
    PopUpMenu(configWindow);
    const MenuLook look = LookOfOpenMenu();
    CloseMenu();
    return look;
}
