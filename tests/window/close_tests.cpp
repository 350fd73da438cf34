// What closes the window only hides it; what ends it.
#include <doctest.h>

#include <commctrl.h>

#include "app/resource.h"
#include "lists/resource.h"
#include "platform/automation_error.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"
#include "tests/window/other_process.h"
#include "tests/window/test_manager.h"

namespace {

constexpr wchar_t kAddUrlTitle[] = L"Add Web Site URL";

bool HasEngine(Manager& manager) {
    return Get(manager.Form().Get(), L"m_oPopup").Value().pdispVal != nullptr;
}

bool HasIcon(Manager& manager) {
    return Get(manager.Form().Get(), L"m_oShellIcon").Value().pdispVal != nullptr;
}

bool IsShown(Manager& manager) {
    return IsWindowVisible(manager.Window()) != FALSE;
}

long EnginesHeld() {
    long popups = -1;
    ThrowIfFailed(RunningEngine()->get_Popups(&popups));
    return popups;
}

// Clicks a button that opens a dialog; returns the dialog when it is there.
HWND OpenDialog(Manager& manager, const wchar_t* button, const wchar_t* title) {
    PostMessageW(manager.Control(button), BM_CLICK, 0, 0);
    HWND dialog = nullptr;
    WaitUntil([&] {
        dialog = FindWindowW(L"#32770", title);
        return dialog != nullptr && IsWindowVisible(dialog);
    });
    return dialog;
}

}  // namespace

TEST_CASE("the close box and the system menu hide the window and keep everything in it") {
    TestManager manager;
    const auto config = manager.Instance(3);
    const HWND window = manager.Window();
    const auto icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    CHECK(EnginesHeld() == 1);

    for (const UINT message : {WM_CLOSE, WM_SYSCOMMAND}) {
        CAPTURE(message);
        manager.Instance(3);
        manager.Type(L"txtPause", L"17");
        manager.Click(L"chkBeep");
        const auto beep = SendMessageW(manager.Control(L"chkBeep"), BM_GETCHECK, 0, 0);
        SendMessageW(window, message, message == WM_SYSCOMMAND ? SC_CLOSE : 0, 0);
        CHECK_FALSE(IsShown(manager));
        CHECK(IsWindow(window));
        CHECK(ToText(Get(icon.Get(), L"ToolTip")) == L"Calvane Sentrel");
        CHECK(EnginesHeld() == 1);
        CHECK(HasEngine(manager));
        CHECK(HasIcon(manager));
        CHECK_FALSE(ToBool(Get(manager.Form().Get(), L"b_OKtoUnload")));

        manager.Instance(formShow);
        CHECK(IsShown(manager));
        CHECK(manager.Window() == window);
        // Neither saved nor reloaded, on the page that was left.
        CHECK(manager.Text(L"txtPause") == L"17");
        CHECK(Setting(L"Settings", L"txtPause") == L"5000");
        CHECK(SendMessageW(manager.Control(L"chkBeep"), BM_GETCHECK, 0, 0) == beep);
        CHECK(Setting(L"Settings", L"chkBeep") == L"0");
        CHECK(IsWindowEnabled(manager.Control(L"cmdApply")));
        CHECK(SendMessageW(manager.Control(L"tab"), TCM_GETCURSEL, 0, 0) == 5);
    }
}

TEST_CASE("with b_OKtoUnload set a close message unloads the window, its icon and its engine") {
    TestManager manager;
    const auto config = manager.Instance(formShow);
    const HWND window = manager.Window();
    CHECK(EnginesHeld() == 1);
    Put(manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindow(window); }));
    CHECK_FALSE(HasEngine(manager));
    CHECK(Get(config.Get(), L"ShellIconClass").Value().pdispVal == nullptr);
    CHECK(WaitUntil([] { return EnginesHeld() == 0; }));
    CHECK(manager.Running());
}

TEST_CASE("a log-off is not held up, and unloads the window only when it really comes") {
    TestManager manager;
    manager.Instance(formShow);
    const HWND window = manager.Window();
    for (const LPARAM reason : {LPARAM{0}, static_cast<LPARAM>(ENDSESSION_LOGOFF)}) {
        CHECK(SendMessageW(window, WM_QUERYENDSESSION, 0, reason) == TRUE);
        CHECK(IsShown(manager));
        SendMessageW(window, WM_ENDSESSION, FALSE, reason);
        CHECK(IsShown(manager));
        CHECK(HasEngine(manager));
        CHECK(HasIcon(manager));
    }
    // The edit of the moment is not saved.
    manager.Type(L"txtPause", L"9");
    SendMessageW(window, WM_ENDSESSION, TRUE, static_cast<LPARAM>(ENDSESSION_LOGOFF));
    CHECK_FALSE(IsWindow(window));
    CHECK(EnginesHeld() == 0);
    CHECK(Setting(L"Settings", L"txtPause") == L"5000");

    // So it does with a dialog open.
    manager.Instance(formShow);
    const HWND another = manager.Window();
    const HWND dialog = OpenDialog(manager, L"cmdAddSearch", L"Add Search Address");
    REQUIRE(dialog != nullptr);
    CHECK(SendMessageW(another, WM_QUERYENDSESSION, 0, 0) == TRUE);
    SendMessageW(another, WM_ENDSESSION, TRUE, 0);
    CHECK(WaitUntil([&] { return !IsWindow(another) && !IsWindow(dialog); }));
}

TEST_CASE("ReleaseConfig ends the process while a dialog of the window is open") {
    TestManager manager;
    manager.Instance(formShow);
    const HWND dialog = OpenDialog(manager, L"cmdAddURL", kAddUrlTitle);
    REQUIRE(dialog != nullptr);
    CHECK_FALSE(IsWindowEnabled(manager.Window()));
    CHECK(manager.Control()->ReleaseConfig() == S_OK);
    CHECK(manager.WaitForEnd());
    CHECK_FALSE(IsWindow(dialog));
    manager.LetGo();
}

TEST_CASE("the window goes with its open dialog, and the next one is whole") {
    TestManager manager;
    for (const auto& [button, title] : {std::pair{L"cmdAddSize", L"New Banner Height and Width"},
                                        {L"cmdSoundFile", L"Select a Sound File"}}) {
        CAPTURE(std::wstring(title));
        manager.Instance(formShow);
        const HWND window = manager.Window();
        const HWND dialog = OpenDialog(manager, button, title);
        REQUIRE(dialog != nullptr);
        Put(manager.Form().Get(), L"b_OKtoUnload", true);
        PostMessageW(window, WM_CLOSE, 0, 0);
        CHECK(WaitUntil([window, dialog] { return !IsWindow(window) && !IsWindow(dialog); }));
        CHECK(manager.Running());
    }
    CHECK(Setting(L"Settings", L"SoundFile").ends_with(L"\\Arc.wav"));

    manager.Instance(formShow);
    CHECK(IsShown(manager));
    CHECK(IsWindowEnabled(manager.Window()));
    const HWND another = OpenDialog(manager, L"cmdAddURL", kAddUrlTitle);
    REQUIRE(another != nullptr);
    SendDlgItemMessageW(another, IDC_TXTURL, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"http://new"));
    SendDlgItemMessageW(another, IDOK, BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindow(another); }));
    CHECK(ListBoxRows(manager.Control(L"lstExclude")) == Rows{L"http://new"});
}

TEST_CASE("ReleaseConfig ends the process while the system's file dialog is open") {
    TestManager manager;
    manager.Instance(formShow);
    const HWND dialog = OpenDialog(manager, L"cmdSoundFile", L"Select a Sound File");
    REQUIRE(dialog != nullptr);
    CHECK(manager.Control()->ReleaseConfig() == S_OK);
    CHECK(manager.WaitForEnd());
    manager.LetGo();
}
