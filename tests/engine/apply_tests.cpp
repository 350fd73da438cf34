// OK, Apply and Cancel, and the change mark, with the engine watching.
#include <doctest.h>

#include <commctrl.h>

#include "app/resource.h"
#include "platform/com/variant.h"
#include "tests/engine/user_input.h"
#include "tests/engine/session.h"
#include "tests/engine/tray.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"

namespace {

constexpr wchar_t kSpeedPath[] = L"Software\\Calvane\\Settings\\txtSpeed";

struct Watched : Session {
    Watched() {
        Put(engine.Control(), L"WatchValue", kSpeedPath);
        manager.Instance(formShow);
        Start();
    }

    std::wstring Speed() const { return Setting(L"Settings", L"txtSpeed"); }

    // Clears the mark as OK does, and shows the window again.
    void ClearMark() {
        Press(L"cmdOK");
        manager.Instance(formShow);
        REQUIRE_FALSE(Marked());
    }

    void PressKey(const wchar_t* control, WPARAM virtualKey) {
        const HWND target = manager.Control(control);
        PostMessageW(target, WM_KEYDOWN, virtualKey, 1);
        PostMessageW(target, WM_KEYUP, virtualKey, static_cast<LPARAM>(0xC0000001));
        Settle();
    }
};

}  // namespace

TEST_CASE("Apply reaches the engine as one ReloadSettings after the store has been written") {
    Watched session;
    CHECK_FALSE(session.Marked());
    session.Spin(L"udbSpeed", true);
    CHECK(session.manager.Text(L"txtSpeed") == L"7");
    CHECK(session.Marked());
    CHECK(session.Speed() == L"1000");
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.Speed() == L"800");
    PumpFor(300);
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=800"});
    CHECK(session.Visible());

    // Each Apply is one call, with what is stored by then.
    session.Spin(L"udbSpeed", false);
    session.Spin(L"udbSpeed", false);
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=800", L"ReloadSettings txtSpeed=1200"});
}

TEST_CASE("Apply waits for the engine before it clears the mark, and clears it after a failure too") {
    Watched session;
    session.Spin(L"udbSpeed", true);
    const HeldCall held = session.engine.Hold(L"ReloadSettings");
    PostMessageW(session.apply, BM_CLICK, 0, 0);
    CHECK(held.Arrives());
    CHECK(session.Speed() == L"800");
    session.Settle();
    CHECK(session.Marked());
    held.LetGo();
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.engine.Count(L"ReloadSettings") == 1);

    session.Spin(L"udbSpeed", true);
    CHECK(session.Marked());
    session.engine.Fail(L"ReloadSettings");
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.Speed() == L"600");
    CHECK(session.engine.Count(L"ReloadSettings") == 2);

    // Nothing is left of the failure.
    session.Spin(L"udbSpeed", true);
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.engine.Calls().back() == L"ReloadSettings txtSpeed=400");
}

TEST_CASE("OK stores, hides and clears the mark, and the engine is told nothing until a later Apply") {
    Watched session;
    session.Spin(L"udbSpeed", true);
    session.Press(L"cmdOK");
    CHECK_FALSE(session.Visible());
    CHECK_FALSE(session.Marked());
    CHECK(session.Speed() == L"800");
    PumpFor(300);
    CHECK(session.engine.Calls() == Lines{});

    session.manager.Instance(formShow);
    CHECK_FALSE(session.Marked());
    CHECK(session.manager.Text(L"txtSpeed") == L"7");
    session.Apply();
    CHECK(WaitUntil([&] { return session.engine.Count(L"ReloadSettings") == 1; }));
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=800"});
}

TEST_CASE("Cancel shows the stored values, hides, leaves the mark and tells the engine nothing") {
    Watched session;
    SUBCASE("By the button") {
        session.Spin(L"udbSpeed", true);
        session.Press(L"cmdCancel");
    }
    SUBCASE("By Esc") {
        session.Spin(L"udbSpeed", true);
        session.PressKey(L"txtSpeed", VK_ESCAPE);
    }
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    CHECK(session.Speed() == L"1000");
    // The log's path is all that loading asks for.
    CHECK(session.engine.Calls() == Lines{L"LogFile"});
    session.manager.Instance(formShow);
    CHECK(session.manager.Text(L"txtSpeed") == L"6");
    CHECK(session.Marked());
    session.engine.ClearCalls();
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=1000"});
    // Where nothing was marked, Cancel marks nothing, although it sets every control.
    session.Press(L"cmdCancel");
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    CHECK_FALSE(session.Marked());
}

TEST_CASE("closing the window keeps the edits, the mark, the engine and the icon") {
    Watched session;
    REQUIRE(WaitForIcon());
    session.Spin(L"udbSpeed", true);
    PostMessageW(session.window, WM_SYSCOMMAND, SC_CLOSE, 0);
    CHECK(WaitUntil([&] { return !session.Visible(); }));
    PumpFor(200);
    CHECK(session.engine.Calls() == Lines{});
    CHECK(session.engine.Popups() == 1);
    CHECK(session.engine.Connections() == 1);
    CHECK(session.Speed() == L"1000");
    CHECK(IconStory() == "add rest");
    session.manager.Instance(formShow);
    CHECK(session.manager.Window() == session.window);
    CHECK(session.Visible());
    CHECK(session.manager.Text(L"txtSpeed") == L"7");
    CHECK(session.Marked());
}

TEST_CASE("every editing control marks a change, typing a speed or a pause does not") {
    Watched session;
    for (const wchar_t* const upDown : {L"udbSpeed", L"udbPause"}) {
        CAPTURE(ToAnsi(upDown));
        session.Spin(upDown, true);
        CHECK(session.Marked());
        session.ClearMark();
    }
    CHECK(session.manager.Text(L"txtPause") == L"6");

    for (const wchar_t* const box : {L"txtSpeed", L"txtPause"}) {
        CAPTURE(ToAnsi(box));
        session.manager.Type(box, L"9");
        CHECK(session.manager.Text(box) == L"9");
        CHECK_FALSE(session.Marked());
    }
    for (const wchar_t* const button :
         {L"optStartup", L"optLoadWithKiller", L"optLoadFromMenu", L"chkBeep", L"chkPlaySound"}) {
        CAPTURE(ToAnsi(button));
        session.Press(button);
        CHECK(session.Marked());
        session.ClearMark();
    }
    session.PressKey(L"cboPauseKey", VK_DOWN);
    CHECK(session.manager.Text(L"cboPauseKey") == L"F6");
    CHECK(session.Marked());
    session.ClearMark();
    CHECK(Setting(L"Settings", L"Pause Key") == L"F6");
    CHECK(session.engine.Calls() == Lines{});
}

TEST_CASE("edits of the lists mark a change, a dialog that is cancelled too") {
    Watched session;
    for (const wchar_t* const list : {L"lvwBanners", L"lvwSearchURLs"}) {
        CAPTURE(ToAnsi(list));
        const auto stateOfFirst = [&] {
            return SendMessageW(session.manager.Control(list), LVM_GETITEMSTATE, 0, LVIS_STATEIMAGEMASK);
        };
        session.PressKey(list, VK_HOME);
        session.ClearMark();
        const LRESULT before = stateOfFirst();
        session.PressKey(list, VK_SPACE);
        CHECK(stateOfFirst() != before);
        CHECK(session.Marked());
        session.ClearMark();
    }
    for (const wchar_t* const button : {L"cmdAddURL", L"cmdAddSize", L"cmdAddSearch"}) {
        CAPTURE(ToAnsi(button));
        const HWND dialog = session.OpenDialog(button);
        REQUIRE(dialog != nullptr);
        CHECK_FALSE(session.Marked());
        REQUIRE(session.CancelDialog(dialog));
        session.Settle();
        CHECK(session.Marked());
        session.ClearMark();
    }
    CHECK(session.engine.Calls() == Lines{});

    // An address that is removed goes from the store with Apply.
    WriteSetting(L"Exclude", L"0", L"www.one.example");
    session.Press(L"cmdCancel");
    session.manager.Instance(formShow);
    CHECK_FALSE(session.Marked());
    session.PressKey(L"lstExclude", VK_HOME);
    session.Press(L"cmdRemoveURL");
    CHECK(session.Marked());
    CHECK(HasSetting(L"Exclude", L"0"));
    session.Press(L"cmdApply");
    CHECK(WaitUntil([&] { return !session.Marked(); }));
    CHECK_FALSE(HasSetting(L"Exclude", L"0"));
    CHECK(session.engine.Count(L"ReloadSettings") == 1);
}

TEST_CASE("loading never marks a change, whatever is stored") {
    Session first;
    first.Start();
    first.manager.Control()->ReleaseConfig();
    REQUIRE(first.manager.WaitForEnd());
    first.manager.LetGo();
    WriteSetting(L"Settings", L"chkBeep", L"1");
    WriteSetting(L"Settings", L"chkPlaySound", L"1");
    WriteSetting(L"Settings", L"SoundFile", L"C:\\ding.wav");
    WriteSetting(L"Settings", L"Pause Key", L"F9");
    WriteSetting(L"Settings", L"Startup", L"RunOnly");
    WriteSetting(L"Settings", L"txtSpeed", L"400");
    WriteSetting(L"Exclude", L"0", L"www.one.example");

    Session session(true);
    session.Start();
    CHECK(session.manager.Text(L"cboPauseKey") == L"F9");
    CHECK(session.manager.Text(L"txtSpeed") == L"9");
    CHECK(SendMessageW(session.manager.Control(L"chkBeep"), BM_GETCHECK, 0, 0) == BST_CHECKED);
    CHECK_FALSE(session.Marked());
    session.Press(L"cmdCancel");
    CHECK_FALSE(session.Marked());
    session.manager.Instance(formShow);
    CHECK_FALSE(session.Marked());
}

TEST_CASE(
    "the disabled Apply cannot be clicked; its handler saves everything and tells the engine all the same") {
    Watched session;
    DeleteSettings();
    SetForegroundWindow(session.window);
    MoveMouseTo(CenterOf(session.apply));
    LeftClick();
    PumpFor(300);
    CHECK(session.engine.Calls() == Lines{});
    CHECK(SettingCount(L"Settings") == 0);

    session.Apply();
    CHECK(WaitUntil([&] { return session.engine.Count(L"ReloadSettings") == 1; }));
    CHECK(session.engine.Calls() == Lines{L"ReloadSettings txtSpeed=1000"});
    CHECK(Setting(L"Settings", L"txtPause") == L"5000");
    CHECK(HasSetting(L"Banners", L"4Use"));
    CHECK(HasSetting(L"Search", L"6Use"));
    CHECK(WaitUntil([&] { return !session.Marked(); }));

    // Marked, the same click saves.
    session.Spin(L"udbSpeed", true);
    MoveMouseTo(CenterOf(session.apply));
    LeftClick();
    CHECK(WaitUntil([&] { return session.engine.Count(L"ReloadSettings txtSpeed=800") == 1; }));
}
