// What the window is like to its user: where it appears, and its icon when a pop-up has been closed.
#include <doctest.h>

#include <string_view>
#include <utility>
#include <vector>

#include "options/resource.h"
#include "platform/dpi.h"
#include "platform/icon.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/entry/journalled.h"
#include "tests/support/message_pump.h"
#include "tests/support/sound_patch.h"

namespace {

constexpr DISPID kKilled = 1;

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

std::vector<std::pair<bool, DWORD>> textures;  // whether the page has controls, and the flags

HRESULT WINAPI EnableTexture(HWND page, DWORD flags) {
    textures.emplace_back(GetWindow(page, GW_CHILD) != nullptr, flags);
    return S_OK;
}

}  // namespace

TEST_CASE("each page, once it is there, gets the colours of the tabs that it lies in") {
    textures.clear();
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [&](HMODULE library, LPCSTR name) {
            if (HIWORD(name) == 0 || std::string_view(name) != "EnableThemeDialogTexture")
                return functions.Original(library, name);
            return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&EnableTexture));
        }};
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    constexpr DWORD kEnableTab = 6;
    CHECK(textures == std::vector<std::pair<bool, DWORD>>(6, {true, kEnableTab}));
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a window is shown where it is, restored, and in the middle of the nearest monitor, in its "
                  "own size, where its own has gone") {
    Instance(FormHide);
    const RECT before = Bounds();
    MoveTo(30, 40);
    Instance(formShow);
    CHECK(Bounds().left == 30);
    CHECK(Bounds().top == 40);
    ShowWindow(Window(), SW_MINIMIZE);
    REQUIRE(IsIconic(Window()));
    Instance(formShow);
    CHECK_FALSE(IsIconic(Window()));

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

// To a window of a program of more rights than the sender's Windows delivers no message but those that the
// window lets in.
TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a manager of more rights than Explorer hears of a new taskbar, and of nothing else") {
    std::vector<std::pair<HWND, UINT>> allowed;
    const ImportFake<"ChangeWindowMessageFilterEx", decltype(&ChangeWindowMessageFilterEx)> filter{
        "user32.dll", [&](HWND window, UINT message, DWORD action, CHANGEFILTERSTRUCT* status) {
            CHECK(action == MSGFLT_ALLOW);
            CHECK(status == nullptr);
            allowed.emplace_back(window, message);
            return TRUE;
        }};
    Instance(FormHide);
    CHECK(allowed == std::vector{std::pair{Window(), RegisterWindowMessageW(L"TaskbarCreated")}});
}

TEST_CASE_FIXTURE(
    Journalled,
    "the icon is added with an empty tip, and gets its tip after that; a closed pop-up starts the frames, "
    "then gives the notice that the window shows, saved or not; the frames are three pictures, behind which "
    "the resting one comes back with the tip") {
    const SoundPatch play([this](LPCSTR path, UINT flags) {
        Note(std::string("play ") + path + ' ' + std::to_string(flags));
        return TRUE;
    });
    const ImportFake<"MessageBeep", decltype(&MessageBeep)> beep("user32.dll", [this](UINT type) {
        Note("beep " + std::to_string(type));
        return TRUE;
    });
    const ImportFake<"SetTimer", decltype(&SetTimer)> timer{
        "user32.dll", [&](HWND hwnd, UINT_PTR id, UINT period, TIMERPROC procedure) {
            Note("timer " + std::to_string(period));
            return timer.Original(hwnd, id, period, procedure);
        }};
    // What is done at once.
    const auto close = [this] {
        entries.clear();
        engine.Raise(kKilled, {Variant(0x20304L), Variant(L"Win a prize")});
        return entries;
    };
    Instance(FormHide);
    const std::vector<ShellCall>& calls = shell.calls;
    REQUIRE(calls.size() == 1);
    CHECK(static_cast<LONG>(calls[0].Number(4)) == g_lngConfigHwnd);
    CHECK(calls[0].Number(16) == kTrayCallback);
    CHECK(calls[0].Tip() == std::string(1, '\0') + std::string(63, ' '));
    using Deeds = std::vector<std::string>;
    CHECK(close() == Deeds{"timer 250", "play " + ToAnsi(ServerDirectory()) + "\\Arc.wav 1"});
    Click(IDC_CHKBEEP);
    CHECK(close() == Deeds{"timer 250", "beep 0"});

    REQUIRE(PumpUntil([&] { return calls.size() >= 6; }));
    const std::pair<DWORD, int> shown[] = {{NIM_ADD, IDI_TRAY_REST}, {NIM_MODIFY, IDI_TRAY_0},
                                           {NIM_MODIFY, IDI_TRAY_1}, {NIM_MODIFY, IDI_TRAY_2},
                                           {NIM_DELETE, IDI_TRAY_2}, {NIM_ADD, IDI_TRAY_REST}};
    for (size_t i = 0; i < std::size(shown); ++i) {
        CAPTURE(i);
        CHECK(calls[i].action == shown[i].first);
        const IconHandle own = LoadSmallIcon(shown[i].second, TaskbarDpi());
        CHECK(ColoursOf(reinterpret_cast<HICON>(calls[i].Icon())) == ColoursOf(own.Get()));
    }
    CHECK(calls[5].Tip() == std::string("Calvane Sentrel\0", 16) + std::string(48, ' '));
}
