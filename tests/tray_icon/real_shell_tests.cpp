#include <doctest.h>

#include <windows.h>
#include <shellapi.h>

#include "app/resource.h"
#include "tray/picture_box.h"
#include "tests/support/message_pump.h"
#include "tests/support/plain_window.h"
#include "tray/shell_notification.h"

namespace {

// The shell changes only icons that it has.
bool ShellHasIcon(HWND hwnd) {
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = hwnd;
    data.uID = 1;
    return Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
}

struct RealShellFixture {
    RealShellFixture() : icon(MakeObject<ShellNotification>()) {
        icon->InitShellNotify(window.Number(), 1025);
        icon->AddIcon(rest.Get());
    }

    PlainWindow window;
    const ComPtr<PictureBox> rest = MakeObject<PictureBox>(L"picShellIcon", IDI_TRAY_REST);
    ComPtr<ShellNotification> icon;
};

}  // namespace

TEST_CASE_FIXTURE(RealShellFixture, "the real shell takes the icon and gives it up") {
    REQUIRE(PumpUntil([&] { return ShellHasIcon(window.Hwnd()); }));
    icon->RemoveIcon();
    CHECK_FALSE(ShellHasIcon(window.Hwnd()));
}

TEST_CASE_FIXTURE(RealShellFixture,
                  "the real shell has the icon after an animation, and none after the owner's release") {
    REQUIRE(PumpUntil([&] { return ShellHasIcon(window.Hwnd()); }));
    PictureArray pictures(0, 3);
    for (LONG i = 0; i < 3; ++i) {
        pictures.Item(i, MakeObject<PictureBox>(L"picTray", IDI_TRAY_0 + static_cast<int>(i)).Get());
    }
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 20, 1, window.Number()) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(ShellHasIcon(window.Hwnd()));
    icon.Reset();
    CHECK_FALSE(ShellHasIcon(window.Hwnd()));
}

TEST_CASE_FIXTURE(RealShellFixture,
                  "the owner's release in the middle of an animation leaves no icon with the real shell") {
    PictureArray pictures(0, 3);
    pictures.Item(0, rest.Get());
    REQUIRE(icon->AnimateIcon(pictures.Reference(), 20, 1, window.Number()) == S_OK);
    PumpFor(30);
    icon.Reset();
    PumpFor(100);
    CHECK_FALSE(ShellHasIcon(window.Hwnd()));
}
