// What the window is like to its user: where it appears, its pictures, its tray menu, a new taskbar.
#include <doctest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"
#include "tray/picture_box.h"
#include "tray/tray_menu.h"

namespace {

RECT Bounds() {
    RECT bounds{};
    GetWindowRect(Window(), &bounds);
    return bounds;
}

void MoveTo(int x, int y) {
    SetWindowPos(Window(), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

std::string ColoursOf(HICON icon) {
    ICONINFO info{};
    BITMAP bitmap{};
    REQUIRE(GetIconInfo(icon, &info));
    GetObjectW(info.hbmColor, sizeof(bitmap), &bitmap);
    std::string colours(static_cast<size_t>(bitmap.bmWidthBytes * bitmap.bmHeight), '\0');
    CHECK(GetBitmapBits(info.hbmColor, static_cast<LONG>(colours.size()), colours.data()) > 0);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return colours;
}

std::string shownMenu;

// Notes which of the engine's three items can be chosen, "Start Stop Pause", and chooses none.
BOOL WINAPI NoteMenu(HMENU menu, UINT, int, int, HWND, TPMPARAMS*) {
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        shownMenu += (GetMenuState(menu, item, MF_BYCOMMAND) & MF_GRAYED) == 0 ? '+' : '-';
    return FALSE;
}

std::string Menu() {
    shownMenu.clear();
    const ImportPatch track("user32.dll", "TrackPopupMenuEx", &NoteMenu);
    SendMessageW(Window(), kTrayCallback, 1, WM_RBUTTONUP);
    return shownMenu;
}

// To a window of a program of more rights than the sender's Windows delivers no message but those that the
// window lets in.
struct Filter : InsideWithoutEngine {
    static BOOL WINAPI Change(HWND window, UINT message, DWORD action, CHANGEFILTERSTRUCT* status) {
        CHECK(status == nullptr);
        if (action == MSGFLT_ALLOW) s_allowed.push_back({window, message});
        return TRUE;
    }

    using Allowed = std::vector<std::pair<HWND, UINT>>;
    static inline Allowed s_allowed;
    const ImportPatch patch{"user32.dll", "ChangeWindowMessageFilterEx", &Change};
};

}  // namespace

TEST_CASE_FIXTURE(
    InsideWithoutEngine,
    "a window whose monitor has gone is shown in the middle of the nearest one, in its own size") {
    Instance(FormHide);
    const RECT before = Bounds();
    MoveTo(-20000, -20000);
    REQUIRE(MonitorFromWindow(Window(), MONITOR_DEFAULTTONULL) == nullptr);

    Instance(formShow);
    const RECT after = Bounds();
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(Window(), MONITOR_DEFAULTTONEAREST), &monitor);
    RECT inBoth{};
    IntersectRect(&inBoth, &after, &monitor.rcWork);
    CHECK(EqualRect(&inBoth, &after));
    CHECK(after.right - after.left == before.right - before.left);
    CHECK(after.bottom - after.top == before.bottom - before.top);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "a window on a monitor is shown where it is") {
    Instance(FormHide);
    MoveTo(30, 40);
    Instance(formShow);
    CHECK(Bounds().left == 30);
    CHECK(Bounds().top == 40);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "a window that was minimised is restored when it is shown again") {
    Instance(formShow);
    ShowWindow(Window(), SW_MINIMIZE);
    REQUIRE(IsIconic(Window()));
    Instance(formShow);
    CHECK_FALSE(IsIconic(Window()));
    CHECK(IsShown());
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "showing the window while one of its dialogs is open leaves the dialog the keyboard") {
    Instance(formShow);
    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE | WS_CAPTION, 0, 0, 100, 50,
                                        Window(), nullptr, nullptr, nullptr);
    SetActiveWindow(dialog);
    EnableWindow(Window(), FALSE);
    REQUIRE(GetActiveWindow() == dialog);
    g_frmConfig->Show();
    CHECK(GetActiveWindow() == dialog);
    EnableWindow(Window(), TRUE);
    DestroyWindow(dialog);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "no two of the resting picture and the three frames look alike") {
    Instance(FormHide);
    ComPtr<IDispatch> box;
    REQUIRE(g_frmConfig->get_picShellIcon(&box) == S_OK);
    std::set<std::string> pictures{ColoursOf(IconOf(box.Get()))};
    for (short frame = 0; frame < 3; ++frame) {
        REQUIRE(g_frmConfig->get_picTray(frame, box.ReleaseAndGetAddressOf()) == S_OK);
        pictures.insert(ColoursOf(IconOf(box.Get())));
    }
    CHECK(pictures.size() == 4);
}

TEST_CASE_FIXTURE(Filter,
                  "a manager of more rights than Explorer hears of a new taskbar, and of nothing else") {
    const UINT taskbarCreated = RegisterWindowMessageW(L"TaskbarCreated");
    Instance(FormHide);
    // Of each window that is made.
    for (int i = 0; i < 2; ++i) {
        CHECK(s_allowed == Allowed{{Window(), taskbarCreated}});
        s_allowed.clear();
        g_frmConfig->Unload();
        g_frmConfig->Handle();
    }
}

TEST_CASE("a window made again has the menu as designed where its engine tells no state") {
    using Change = void (*)(EngineScript & engine);
    constexpr Change kChanges[] = {
        [](EngineScript& engine) { engine.results["CreateInstance"] = REGDB_E_CLASSNOTREG; },
        [](EngineScript& engine) { engine.results["CreatePopup"] = E_FAIL; },
        [](EngineScript& engine) { engine.results["State"] = E_FAIL; },
        [](EngineScript& engine) { engine.state = 7; },
    };
    for (const Change change : kChanges) {
        Journalled inside;
        StartJournal& journal = inside.journal;
        journal.engine.script.state = 2;
        inside.Instance(FormHide);
        CHECK(Menu() == "+--");

        g_frmConfig->Unload();
        change(journal.engine.script);
        g_frmConfig->Handle();
        CHECK(Menu() == "+++");
    }
}
